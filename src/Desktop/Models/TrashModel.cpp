#include "Desktop/Models/TrashModel.h"

#include <algorithm>
#include <utility>

#include "Core/Extensions/AttachmentNamingKit.h"
#include "Core/Markdown/SpokenText.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"
#include "Desktop/Base/Qt.h"
#include "Desktop/Models/MemoDates.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

// What three lines of a card may hold; a longer text is not read to its end.
constexpr std::size_t previewLength = 240;
constexpr std::size_t mostShown = 20'000;

QStringList attachmentNames(const Memo& memo) {
  QStringList names;
  for (const std::string& file : memo.attachments) {
    const auto original = memo.originalNames.find(file);
    names.append(qt(AttachmentNamingKit::displayName(file, original == memo.originalNames.end()
                                                               ? std::nullopt
                                                               : std::optional(original->second))));
  }
  return names;
}

QString previewOf(const Memo& memo) {
  const std::string text =
      spokenText(graphemePrefix(std::string_view(memo.body).substr(0, mostShown), previewLength));
  return qt(text).simplified();
}

}  // namespace

void TrashModel::show(const Entries& entries, Day today) {
  today_ = today;
  const int countBefore = count();
  const auto isIn = [](const Entries& all, const TrashEntry& entry) {
    return std::ranges::find(all, entry.trashSubdir, &TrashEntry::trashSubdir) != all.end();
  };
  for (int row = count() - 1; row >= 0; --row) {
    if (isIn(entries, entries_[static_cast<std::size_t>(row)])) continue;
    beginRemoveRows({}, row, row);
    entries_.erase(entries_.begin() + row);
    endRemoveRows();
  }
  const Entries kept = entries_;
  for (int row = 0; row < static_cast<int>(entries.size()); ++row) {
    const TrashEntry& entry = entries[static_cast<std::size_t>(row)];
    if (isIn(kept, entry)) continue;
    const int place = std::min(row, count());
    beginInsertRows({}, place, place);
    entries_.insert(entries_.begin() + place, entry);
    endInsertRows();
  }
  if (entries_ != entries) {
    beginResetModel();
    entries_ = entries;
    endResetModel();
  }
  const auto gone = std::erase_if(checked_, [&](const std::string& name) {
    return std::ranges::find(entries_, name, &TrashEntry::trashSubdir) == entries_.end();
  });
  if (count() != countBefore) emit countChanged();
  if (gone > 0 || count() != countBefore) emit checkedChanged();
}

TrashModel::Entries TrashModel::checkedEntries() const {
  Entries chosen;
  for (const TrashEntry& entry : entries_)
    if (checked_.contains(entry.trashSubdir)) chosen.push_back(entry);
  return chosen;
}

TrashModel::Entries TrashModel::entriesAt(int row) const {
  if (row < 0 || row >= count()) return {};
  return {entries_[static_cast<std::size_t>(row)]};
}

void TrashModel::toggle(int row) {
  const Entries entry = entriesAt(row);
  if (entry.empty()) return;
  lastToggled_ = entry.front().trashSubdir;
  set(row, row, !checked_.contains(lastToggled_));
}

void TrashModel::toggleTo(int row) {
  const auto last = std::ranges::find(entries_, lastToggled_, &TrashEntry::trashSubdir);
  if (last == entries_.end() || row < 0 || row >= count()) return toggle(row);
  const int from = static_cast<int>(last - entries_.begin());
  set(std::min(row, from), std::max(row, from), checked_.contains(lastToggled_));
}

void TrashModel::checkAll(bool isChecked) {
  if (count() > 0) set(0, count() - 1, isChecked);
}

void TrashModel::set(int first, int last, bool isChecked) {
  for (int row = first; row <= last; ++row) {
    const std::string& name = entries_[static_cast<std::size_t>(row)].trashSubdir;
    if (isChecked)
      checked_.insert(name);
    else
      checked_.erase(name);
  }
  emit dataChanged(index(first), index(last), {IsChecked});
  emit checkedChanged();
}

int TrashModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : count();
}

QVariant TrashModel::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
  const TrashEntry& entry = entries_[static_cast<std::size_t>(index.row())];
  switch (role) {
    case DateName:
      return MemoDates::dayName(entry.originalDate, today_) + QLatin1Char(' ') +
             qt(entry.memo.time);
    case Preview:
      return previewOf(entry.memo);
    case Body:
      return qt(graphemePrefix(
          MemoTextUtilities::stripOriginalComment(entry.memo.body).substr(0, 4 * mostShown),
          mostShown));
    case AttachmentNames:
      return attachmentNames(entry.memo).join(QStringLiteral("、"));
    case IsChecked:
      return checked_.contains(entry.trashSubdir);
    default:
      return {};
  }
}

QHash<int, QByteArray> TrashModel::roleNames() const {
  return {{DateName, "dateName"},
          {Preview, "preview"},
          {Body, "body"},
          {AttachmentNames, "attachmentNames"},
          {IsChecked, "isChecked"}};
}

}  // namespace nomely
