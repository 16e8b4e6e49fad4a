#include "Desktop/Models/TagTreeModel.h"

#include <QLocale>
#include <algorithm>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "Desktop/Base/Qt.h"

namespace nomely {

int TagTreeModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QHash<int, QByteArray> TagTreeModel::roleNames() const {
  return {{IsHeading, "isHeading"}, {Tag, "tag"},           {Label, "label"},
          {Memos, "memos"},         {Depth, "depth"},       {Opens, "opens"},
          {IsOpen, "isOpen"},       {IsPinned, "isPinned"}, {IsCollection, "isCollection"},
          {TagColor, "tagColor"},   {Emoji, "emoji"}};
}

QVariant TagTreeModel::data(const QModelIndex& index, int role) const {
  const TagRow* row = at(index.row());
  if (!row) return {};
  switch (role) {
    case IsHeading:
      return row->kind == TagRow::Kind::heading;
    case Tag:
      return qt(row->tag);
    case Label:
      return qt(row->label);
    case Memos:
      return row->kind == TagRow::Kind::tag || row->count > 0
                 ? QLocale(QLocale::Chinese).toString(static_cast<qlonglong>(row->count))
                 : QString();
    case Depth:
      return row->depth;
    case Opens:
      return row->opens;
    case IsOpen:
      return row->isOpen;
    case IsPinned:
      return row->isPinned;
    case IsCollection:
      return row->isCollection;
    case TagColor:
      return qt(row->color);
    case Emoji:
      return qt(row->emoji);
    default:
      return {};
  }
}

const TagRow* TagTreeModel::at(int row) const {
  return row >= 0 && row < rowCount() ? &rows_[static_cast<std::size_t>(row)] : nullptr;
}

void TagTreeModel::show(TagSource source) {
  if (source_ == source) return;
  source_ = std::move(source);
  rebuild();
}

void TagTreeModel::alter(const std::function<void(TagView&)>& change) {
  change(view_);
  rebuild();
}

// Rows are told apart by their keys: those that go are removed, then each place gets its row, from
// further below or new.
void TagTreeModel::rebuild() {
  const std::vector<TagRow> rows = TagRows::of(source_, view_);
  const std::size_t countBefore = rows_.size();
  std::unordered_set<std::string_view> stay;
  for (const TagRow& row : rows) stay.insert(row.key);
  for (std::size_t end = rows_.size(); end > 0;) {
    std::size_t begin = end;
    while (begin > 0 && !stay.contains(rows_[begin - 1].key)) --begin;
    if (begin < end) {
      beginRemoveRows({}, static_cast<int>(begin), static_cast<int>(end - 1));
      rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(begin),
                  rows_.begin() + static_cast<std::ptrdiff_t>(end));
      endRemoveRows();
    }
    end = begin > 0 ? begin - 1 : 0;
  }
  std::unordered_set<std::string> present;
  for (const TagRow& row : rows_) present.insert(row.key);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const auto place = rows_.begin() + static_cast<std::ptrdiff_t>(i);
    const int at = static_cast<int>(i);
    if (!present.contains(rows[i].key)) {
      beginInsertRows({}, at, at);
      rows_.insert(place, rows[i]);
      endInsertRows();
      continue;
    }
    const auto from = std::ranges::find(place, rows_.end(), rows[i].key, &TagRow::key);
    if (from != place) {
      const int before = static_cast<int>(from - rows_.begin());
      beginMoveRows({}, before, before, {}, at);
      std::rotate(place, from, from + 1);
      endMoveRows();
    }
    update(i, rows[i]);
  }
  if (rows_.size() != countBefore) emit countChanged();
}

void TagTreeModel::update(std::size_t row, const TagRow& now) {
  if (rows_[row] == now) return;
  rows_[row] = now;
  const QModelIndex changed = index(static_cast<int>(row));
  emit dataChanged(changed, changed);
}

void TagTreeModel::toggle(int row) {
  const TagRow* chosen = at(row);
  if (!chosen || !chosen->opens) return;
  alter([isPinnedHeading = chosen->key == TagRows::pinnedKey, tag = chosen->tag](TagView& view) {
    if (isPinnedHeading)
      view.isPinnedOpen = !view.isPinnedOpen;
    else if (view.open.erase(tag) == 0)
      view.open.insert(tag);
  });
  emit viewChanged();
}

QString TagTreeModel::tagAt(int row) const {
  const TagRow* found = at(row);
  return found ? qt(found->tag) : QString();
}

int TagTreeModel::rightOf(int row) {
  const TagRow* chosen = at(row);
  if (!chosen || !chosen->opens) return row;
  if (chosen->isOpen) return next(row, 1);
  toggle(row);
  return row;
}

int TagTreeModel::leftOf(int row) {
  const TagRow* chosen = at(row);
  if (!chosen) return row;
  if (chosen->opens && chosen->isOpen) {
    toggle(row);
    return row;
  }
  int above = row;
  while (above > 0 && at(above)->depth >= chosen->depth) --above;
  return chosen->depth > 0 ? above : row;
}

bool TagTreeModel::canBeChosen(const TagRow& row) const {
  return row.kind == TagRow::Kind::tag || row.opens || !row.tag.empty();
}

int TagTreeModel::next(int row, int step) const {
  for (int place = row + step; const TagRow* found = at(place); place += step)
    if (canBeChosen(*found)) return place;
  return row;
}

}  // namespace nomely
