#pragma once

#include <QQuickAsyncImageProvider>

#include "Desktop/Pictures/PictureCache.h"
#include "Platform/Concurrency/JobPool.h"

namespace nomely {

// Pictures of files for QML: "image://thumbnail/<percent-encoded absolute path>", decoded to the
// Image's sourceSize, which counts pixels of the screen. With both sides given it is scaled and cut
// to them, or scaled to lie within them with "?fit=within"; one side leaves the other free.
// "radius=12" rounds the corners. What QML shows is kept here, so an Image says `cache: false`.
class ThumbnailProvider : public QQuickAsyncImageProvider {
 public:
  static constexpr auto name = "thumbnail";

  QQuickImageResponse* requestImageResponse(const QString& id, const QSize& requestedSize) override;

  // What an Image has as its source.
  [[nodiscard]] static QString source(const QString& absolutePath);

 private:
  static constexpr std::size_t mostBytes = std::size_t{16} * 1000 * 1000;
  static constexpr std::size_t decodersAtOnce = 2;

  PictureCache cache_{mostBytes};
  JobPool jobs_{decodersAtOnce};
};

}  // namespace nomely
