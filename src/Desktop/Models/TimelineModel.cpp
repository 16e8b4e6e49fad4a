#include "Desktop/Models/TimelineModel.h"

#include <algorithm>

#include "Desktop/Base/Qt.h"
#include "Desktop/Models/ListDiff.h"

namespace nomely {

TimelineModel::TimelineModel(QObject* parent) : QAbstractListModel(parent) {}
TimelineModel::~TimelineModel() = default;

int TimelineModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QHash<int, QByteArray> TimelineModel::roleNames() const {
  return {{Memo, "memo"},
          {Heading, "heading"},
          {HeadingNote, "headingNote"},
          {Expanded, "expanded"},
          {Snippet, "snippet"}};
}

QVariant TimelineModel::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
  const auto row = static_cast<std::size_t>(index.row());
  const MemoHandle handle{.entry = rows_[row]};
  switch (role) {
    case Memo:
      return QVariant::fromValue(handle);
    case Heading:
      return beginsSection(row) ? sectionOf(index.row()) : QString();
    case HeadingNote:
      return beginsSection(row) ? sectionNoteOf(index.row()) : QString();
    case Expanded:
      return expanded_.contains(handle.key());
    default:
      return {};
  }
}

bool TimelineModel::isOnTop(std::size_t row) const {
  return rows_[row].memo->pinned || rows_[row].memo->lockedOnTop;
}

bool TimelineModel::beginsSection(std::size_t row) const {
  if (headings_ == Headings::none) return false;
  if (row == 0) return true;
  if (isOnTop(row)) return !isOnTop(row - 1);
  return isOnTop(row - 1) || rows_[row].date != rows_[row - 1].date;
}

QString TimelineModel::sectionOf(int row) const {
  if (!has(row) || headings_ == Headings::none) return {};
  const auto index = static_cast<std::size_t>(row);
  if (isOnTop(index)) return tr("置顶");
  const Day date = rows_[index].date;
  const bool isThisYear = date.civil().year() == today_.civil().year();
  return qt((isThisYear ? sameYear_ : otherYear_).format(date));
}

QString TimelineModel::sectionNoteOf(int row) const {
  if (!has(row) || headings_ == Headings::none || isOnTop(static_cast<std::size_t>(row))) return {};
  const Day date = rows_[static_cast<std::size_t>(row)].date;
  QString note = qt(weekday_.format(date));
  if (date == today_) note += tr(" · 今天");
  if (date == today_.plusDays(-1)) note += tr(" · 昨天");
  return note;
}

void TimelineModel::show(const Entries& entries) {
  using Kind = ListDiff::Step::Kind;
  const std::size_t countBefore = rows_.size();
  const auto at = [&](std::size_t row) { return rows_.begin() + static_cast<std::ptrdiff_t>(row); };
  const std::vector<ListDiff::Step> steps = ListDiff::steps(rows_, entries);
  for (const ListDiff::Step& step : steps) {
    const int first = static_cast<int>(step.first);
    const int last = static_cast<int>(step.first + step.count) - 1;
    switch (step.kind) {
      case Kind::remove:
        beginRemoveRows({}, first, last);
        rows_.erase(at(step.first), at(step.first + step.count));
        endRemoveRows();
        break;
      case Kind::insert:
        beginInsertRows({}, first, last);
        rows_.insert(at(step.first), entries.begin() + first, entries.begin() + last + 1);
        endInsertRows();
        break;
      case Kind::move: {
        const int to = static_cast<int>(step.to);
        beginMoveRows({}, first, first, {}, to > first ? to + 1 : to);
        if (to > first)
          std::rotate(at(step.first), at(step.first + 1), at(step.to + 1));
        else
          std::rotate(at(step.to), at(step.first), at(step.first + 1));
        endMoveRows();
        break;
      }
      case Kind::change:
        break;
    }
  }
  rows_ = entries;
  for (const ListDiff::Step& step : steps)
    if (step.kind == Kind::change)
      emit dataChanged(index(static_cast<int>(step.first)),
                       index(static_cast<int>(step.first + step.count) - 1), {Memo, Snippet});
  if (!steps.empty()) tellHeadings();
  if (rows_.size() != countBefore) emit countChanged();
}

void TimelineModel::reset(const Entries& entries) {
  const bool isOtherCount = rows_.size() != entries.size();
  beginResetModel();
  rows_ = entries;
  endResetModel();
  if (isOtherCount) emit countChanged();
}

void TimelineModel::setHeadings(Headings headings) {
  if (std::exchange(headings_, headings) != headings) tellHeadings();
}

void TimelineModel::setToday(Day today) {
  if (std::exchange(today_, today) != today) tellHeadings();
}

// A heading hangs on the rows beside its own. Only cards that exist read it again.
void TimelineModel::tellHeadings() {
  if (rows_.empty()) return;
  emit dataChanged(index(0), index(rowCount() - 1), {Heading, HeadingNote});
}

MemoHandle TimelineModel::at(int row) const {
  return has(row) ? MemoHandle{.entry = rows_[static_cast<std::size_t>(row)]} : MemoHandle();
}

int TimelineModel::rowOf(const QString& key) const {
  for (std::size_t row = 0; row < rows_.size(); ++row)
    if (MemoHandle{.entry = rows_[row]}.key() == key) return static_cast<int>(row);
  return -1;
}

void TimelineModel::setExpanded(const QString& key, bool expanded) {
  const bool isOther = expanded ? expanded_.insert(key).second : expanded_.erase(key) > 0;
  const int row = isOther ? rowOf(key) : -1;
  if (row >= 0) emit dataChanged(index(row), index(row), {Expanded});
}

}  // namespace nomely
