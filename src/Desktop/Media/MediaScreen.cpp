#include "Desktop/Media/MediaScreen.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QStandardPaths>
#include <filesystem>
#include <utility>

#include "App/Application.h"
#include "Core/Extensions/AttachmentKinds.h"
#include "Core/Extensions/AttachmentNamingKit.h"
#include "Desktop/Base/Navigation.h"
#include "Desktop/Base/Qt.h"
#include "Desktop/Pictures/PictureFile.h"
#include "Platform/Files/FileError.h"

namespace nomely {
namespace {

constexpr int largestCopied = 8192;  // side of a picture on the clipboard

FileFacts factsOf(const std::filesystem::path& file) {
  const auto label = AttachmentNamingKit::fileSizeLabel(file);
  return {.exists = label.has_value(), .sizeLabel = qt(label.value_or(""))};
}

void copyFile(const std::filesystem::path& source, const std::filesystem::path& target) {
  std::error_code failed;
  std::filesystem::copy_file(source, target, std::filesystem::copy_options::overwrite_existing,
                             failed);
  if (failed) throw FileError("保存", target, failed.value());
}

}  // namespace

MediaScreen::MediaScreen(const ScreenContext& context)
    : context_(context), work_(context.executor, context.jobs) {}

void MediaScreen::open(const QString& path) {
  work_.run([path](const std::stop_token&) { return QFileInfo::exists(path); },
            [this, path](bool exists) {
              if (!exists) return context_.navigation.fail(tr("附件文件不在了：%1").arg(path));
              if (!QDesktopServices::openUrl(QUrl::fromLocalFile(path)))
                context_.navigation.fail(tr("没有能打开这个文件的程序：%1").arg(path));
            });
}

void MediaScreen::showInFolder(const QString& path) {
  const QString folder = QFileInfo(path).path();
  if (!QDesktopServices::openUrl(QUrl::fromLocalFile(folder)))
    context_.navigation.fail(tr("没有能打开文件夹的程序：%1").arg(folder));
}

void MediaScreen::askToSave(const QString& path, const QString& name) {
  saved_ = path;
  const std::string fileName = utf8(QFileInfo(path).fileName());
  const auto place = AttachmentKinds::isImage(fileName) ? QStandardPaths::PicturesLocation
                                                        : QStandardPaths::DownloadLocation;
  emit saveAsked(
      QUrl::fromLocalFile(QStandardPaths::writableLocation(place) + u'/' +
                          qt(AttachmentNamingKit::suggestedDownloadName(fileName, utf8(name)))));
}

void MediaScreen::saveTo(const QUrl& target) {
  const QString chosen = target.toLocalFile();
  if (chosen.isEmpty()) return context_.navigation.fail(tr("只能保存到这台电脑上的文件夹"));
  work_.run([file = saved_, chosen](const std::stop_token&) { copyFile(utf8(file), utf8(chosen)); },
            [this, chosen] { context_.navigation.toast(tr("已保存到 %1").arg(chosen)); },
            [this](const std::string& failure) { context_.navigation.fail(qt(failure)); });
}

void MediaScreen::copyPicture(const QString& path) {
  work_.run(
      [path](const std::stop_token& stop) {
        return PictureFile::decode(
            utf8(path), {.size = {largestCopied, largestCopied}, .fit = PictureForm::Fit::within},
            stop);
      },
      [this](const QImage& picture) {
        QGuiApplication::clipboard()->setImage(picture);
        context_.navigation.toast(tr("已复制图片"));
      },
      [this](const std::string& failure) { context_.navigation.fail(qt(failure)); });
}

QString MediaScreen::path(Day day, const QString& fileName) const {
  return qt((context_.application.paths().dayFolder(day) / utf8(fileName)).string());
}

void MediaScreen::describe(const QStringList& paths,
                           std::function<void(std::vector<FileFacts>)> then) {
  work_.run(
      [paths](const std::stop_token&) {
        std::vector<FileFacts> facts;
        for (const QString& path : paths) facts.push_back(factsOf(utf8(path)));
        return facts;
      },
      std::move(then));
}

}  // namespace nomely
