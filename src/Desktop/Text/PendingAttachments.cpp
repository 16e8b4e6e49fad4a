#include "Desktop/Text/PendingAttachments.h"

#include <algorithm>
#include <utility>

#include "App/Application.h"
#include "Core/Extensions/AttachmentKinds.h"
#include "Core/Extensions/AttachmentNamingKit.h"
#include "Core/Extensions/PathNames.h"
#include "Desktop/Base/Navigation.h"
#include "Desktop/Base/Qt.h"
#include "Desktop/Pictures/ThumbnailProvider.h"
#include "Editor/Timeline/DayViewModel.h"

namespace nomely {

PendingAttachments::PendingAttachments(const ScreenContext& context, std::function<Day()> day)
    : context_(context), day_(std::move(day)), work_(context.executor, context.jobs) {}

void PendingAttachments::set(std::vector<File> files) {
  beginResetModel();
  files_ = std::move(files);
  turns_.assign(files_.size(), 0);
  ++generation_;
  endResetModel();
  emit countChanged();
}

PendingAttachments::Turn PendingAttachments::begin() {
  ++importing_;
  emit importingChanged();
  return {generation_, ++lastTurn_};
}

void PendingAttachments::finish(const Turn& turn, File file) {
  --importing_;
  if (turn.generation == generation_ && !file.name.empty()) {
    const auto place = std::ranges::upper_bound(turns_, turn.number) - turns_.begin();
    beginInsertRows({}, static_cast<int>(place), static_cast<int>(place));
    files_.insert(files_.begin() + place, std::move(file));
    turns_.insert(turns_.begin() + place, turn.number);
    endInsertRows();
    emit countChanged();
    emit added();
  }
  emit importingChanged();
}

void PendingAttachments::add(const QList<QUrl>& urls) {
  DayViewModel& timeline = context_.application.dayViewModel();
  const Day day = day_();
  for (const QUrl& url : urls) {
    const Turn turn = begin();
    timeline.importAttachment(
        std::filesystem::path(utf8(url.toLocalFile())), day,
        [self = QPointer(this), turn,
         day](const std::optional<AttachmentManager::ImportResult>& imported) {
          if (self)
            self->finish(turn, imported ? File{imported->filename, imported->originalName, day}
                                        : File{{}, {}, day});
        });
  }
}

void PendingAttachments::add(const OfferedPicture& picture) {
  const Turn turn = begin();
  const Day day = day_();
  const auto failed = [this, turn, day](const std::string& text) {
    context_.navigation.fail(tr("导入附件失败：") + qt(text));
    finish(turn, File{{}, {}, day});
  };
  work_.run(
      [storage = context_.application.storage(), picture, day](const std::stop_token&) {
        const OfferedPicture::File file = picture.file();
        if (file.bytes.empty()) return std::string();
        return AttachmentStorage::save(storage, file.bytes, file.extension,
                                       storage.paths.dayFolder(day))
            .value_or("");
      },
      [this, failed, turn, day](std::string name) {
        if (name.empty()) return failed(utf8(tr("这张图片读不出，请存成文件再添加")));
        finish(turn, {std::move(name), {}, day});
      },
      failed);
}

void PendingAttachments::remove(int row) {
  if (row < 0 || row >= count()) return;
  beginRemoveRows({}, row, row);
  const File file = files_[static_cast<std::size_t>(row)];
  files_.erase(files_.begin() + row);
  turns_.erase(turns_.begin() + row);
  endRemoveRows();
  emit countChanged();
  emit removed(file.name, file.day);
}

int PendingAttachments::rowCount(const QModelIndex& /*parent*/) const {
  return count();
}

QVariant PendingAttachments::data(const QModelIndex& index, int role) const {
  const File& file = files_.at(static_cast<std::size_t>(index.row()));
  switch (role) {
    case Name:
      return qt(AttachmentNamingKit::displayName(
          file.name, file.originalName.empty() ? std::nullopt : std::optional(file.originalName)));
    case IsPicture:
      return AttachmentKinds::isImage(file.name);
    case Source: {
      const std::filesystem::path path =
          context_.application.paths().dayFolder(file.day) / file.name;
      return ThumbnailProvider::source(qt(path.string()));
    }
    case Kind:
      return qt(lowerCaseExtension(file.name)).toUpper();
    case Tint:
      return qt(AttachmentNamingKit::typeColorHex(file.name));
    default:
      return {};
  }
}

QHash<int, QByteArray> PendingAttachments::roleNames() const {
  return {
      {Name, "name"}, {IsPicture, "isPicture"}, {Source, "source"}, {Kind, "kind"}, {Tint, "tint"}};
}

}  // namespace nomely
