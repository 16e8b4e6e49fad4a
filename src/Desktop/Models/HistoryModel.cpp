#include "Desktop/Models/HistoryModel.h"

#include <utility>

#include "Desktop/Models/MemoDates.h"

namespace nomely {

void HistoryModel::show(Versions versions, Originals originals, Day today) {
  beginResetModel();
  versions_ = std::move(versions);
  originals_ = std::move(originals);
  today_ = today;
  endResetModel();
  emit countChanged();
}

const VersionEntry* HistoryModel::versionAt(int row) const {
  const auto index = static_cast<std::size_t>(row);
  return row >= 0 && index < versions_.size() ? &versions_[index].entry : nullptr;
}

const OriginalFile* HistoryModel::originalAt(int row) const {
  if (row < static_cast<int>(versions_.size()) || row >= rowCount()) return nullptr;
  return &originals_[static_cast<std::size_t>(row) - versions_.size()];
}

int HistoryModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(versions_.size() + originals_.size());
}

QVariant HistoryModel::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
  const OriginalFile* original = originalAt(index.row());
  const Version* version = original ? nullptr : &versions_[static_cast<std::size_t>(index.row())];
  switch (role) {
    case TimeName:
      return MemoDates::momentName(original ? original->timestamp : version->entry.timestamp,
                                   today_);
    case Added:
      return version ? static_cast<int>(version->added) : 0;
    case Removed:
      return version ? static_cast<int>(version->removed) : 0;
    case Note:
      return version ? version->note : tr("原文件");
    case IsOriginal:
      return original != nullptr;
    default:
      return {};
  }
}

QHash<int, QByteArray> HistoryModel::roleNames() const {
  return {{TimeName, "timeName"},
          {Added, "added"},
          {Removed, "removed"},
          {Note, "note"},
          {IsOriginal, "isOriginal"}};
}

}  // namespace nomely
