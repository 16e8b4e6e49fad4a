#include "Desktop/Media/AttachmentModel.h"

#include <QColor>
#include <algorithm>
#include <utility>

#include "Core/Extensions/AttachmentKinds.h"
#include "Core/Extensions/AttachmentNamingKit.h"
#include "Core/Storage/AttachmentManager.h"
#include "Desktop/Base/Qt.h"
#include "Desktop/Pictures/ThumbnailProvider.h"

namespace nomely {
namespace {

AttachmentModel::Kind kindOf(const std::string& name) {
  if (AttachmentKinds::isImage(name)) return AttachmentModel::Images;
  return AttachmentKinds::isAudio(name) ? AttachmentModel::Audio : AttachmentModel::Files;
}

template <typename Value>
std::optional<Value> valueOf(const std::map<std::string, Value>& values, const std::string& key) {
  const auto found = values.find(key);
  return found == values.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace

void AttachmentModel::setMedia(MediaScreen* media) {
  if (std::exchange(media_, media) == media) return;
  emit mediaChanged();
  rebuild();
}

void AttachmentModel::setMemo(const MemoHandle& memo) {
  if (memo_ == memo) return;
  memo_ = memo;
  emit memoChanged();
  rebuild();
}

void AttachmentModel::setKind(Kind kind) {
  if (std::exchange(kind_, kind) == kind) return;
  emit kindChanged();
  rebuild();
}

void AttachmentModel::setMost(int most) {
  if (most_ == most) return;
  beginResetModel();
  most_ = most;
  endResetModel();
  emit mostChanged();
  emit countChanged();
}

int AttachmentModel::rowCount(const QModelIndex& parent) const {
  if (parent.isValid()) return 0;
  return most_ > 0 ? std::min(most_, count()) : count();
}

QVariant AttachmentModel::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
  const auto at = static_cast<std::size_t>(index.row());
  const Row& row = rows_[at];
  const FileFacts* const facts = at < facts_.size() ? &facts_[at] : nullptr;
  switch (role) {
    case FileNameRole:
      return row.fileName;
    case PathRole:
      return row.path;
    case SourceRole:
      return row.path.isEmpty() ? QString() : ThumbnailProvider::source(row.path);
    case IsNamedRole:
      return row.isNamed;
    case NameRole:
      return row.name;
    case NoteRole:
      return row.note;
    case SizeLabelRole:
      return facts ? facts->sizeLabel : QString();
    case IsMissingRole:
      return row.path.isEmpty() || (facts && !facts->exists);
    case GlyphRole:
      return qt(AttachmentNamingKit::fileIcon(utf8(row.fileName)));
    case TintRole:
      return QColor(qt(AttachmentNamingKit::typeColorHex(utf8(row.fileName))));
    case HiddenRole:
      return index.row() == rowCount() - 1 ? count() - rowCount() : 0;
    default:
      return {};
  }
}

QHash<int, QByteArray> AttachmentModel::roleNames() const {
  return {{FileNameRole, "fileName"},   {PathRole, "path"},           {SourceRole, "source"},
          {NameRole, "name"},           {IsNamedRole, "isNamed"},     {NoteRole, "note"},
          {SizeLabelRole, "sizeLabel"}, {IsMissingRole, "isMissing"}, {GlyphRole, "glyph"},
          {TintRole, "tint"},           {HiddenRole, "hidden"}};
}

QString AttachmentModel::path(int row) const {
  return row >= 0 && row < count() ? rows_[static_cast<std::size_t>(row)].path : QString();
}

QString AttachmentModel::name(int row) const {
  return row >= 0 && row < count() ? rows_[static_cast<std::size_t>(row)].name : QString();
}

// A memo that changed elsewhere keeps its rows: pictures don't flicker at a pin.
void AttachmentModel::rebuild() {
  std::vector<Row> rows = rowsOfMemo();
  if (rows == rows_) return;
  beginResetModel();
  rows_ = std::move(rows);
  facts_.clear();
  ++generation_;
  endResetModel();
  emit countChanged();
  askForFacts();
}

std::vector<AttachmentModel::Row> AttachmentModel::rowsOfMemo() const {
  std::vector<Row> rows;
  if (!media_ || !memo_.isValid()) return rows;
  const Memo& memo = *memo_.entry.memo;
  for (const std::string& name : memo.attachments) {
    if (kindOf(name) != kind_) continue;
    Row row;
    row.fileName = qt(name);
    if (AttachmentManager::isSafeName(name))
      row.path = media_->path(memo_.entry.date, row.fileName);
    const auto original = valueOf(memo.originalNames, name);
    row.isNamed = original && !original->empty();
    row.name = qt(AttachmentNamingKit::displayName(name, original));
    row.note = qt(valueOf(memo.attachmentDescriptions, name).value_or(""));
    rows.push_back(std::move(row));
  }
  return rows;
}

void AttachmentModel::askForFacts() {
  if (rows_.empty()) return;
  QStringList paths;
  for (const Row& row : rows_) paths.append(row.path);
  media_->describe(
      paths, lifetime_.guard([this, generation = generation_](std::vector<FileFacts> facts) {
        if (generation != generation_) return;
        facts_ = std::move(facts);
        if (rowCount() > 0)
          emit dataChanged(index(0), index(rowCount() - 1), {SizeLabelRole, IsMissingRole});
      }));
}

}  // namespace nomely
