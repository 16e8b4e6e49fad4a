#include "Desktop/Text/QtPasteboard.h"

#include <QBuffer>
#include <QMimeData>
#include <array>
#include <utility>

namespace nomely {
namespace {

// Formats whose bytes are kept as they are: a picture stored anew would lose quality, or its
// motion.
constexpr std::array<std::pair<const char*, const char*>, 4> keptFormats{
    {{"image/png", "png"}, {"image/jpeg", "jpg"}, {"image/gif", "gif"}, {"image/webp", "webp"}}};

}  // namespace

OfferedPicture::File OfferedPicture::file() const {
  if (!bytes.isEmpty()) return {bytes.toStdString(), extension};
  QByteArray encoded;
  QBuffer buffer(&encoded);
  buffer.open(QIODevice::WriteOnly);
  pixels.save(&buffer, "PNG");
  return {encoded.toStdString(), "png"};
}

bool QtPasteboard::hasImages() const {
  return mime_.hasImage();
}

std::optional<std::string> QtPasteboard::html() const {
  if (!mime_.hasHtml()) return std::nullopt;
  return mime_.html().toStdString();
}

std::optional<std::string> QtPasteboard::richText() const {
  for (const char* const format : {"text/rtf", "application/rtf"})
    if (mime_.hasFormat(QLatin1String(format)))
      return mime_.data(QLatin1String(format)).toStdString();
  return std::nullopt;
}

OfferedPicture QtPasteboard::picture() const {
  for (const auto& [format, extension] : keptFormats) {
    const QByteArray bytes = mime_.data(QLatin1String(format));
    if (!bytes.isEmpty()) return {bytes, extension, {}};
  }
  return {{}, {}, qvariant_cast<QImage>(mime_.imageData())};
}

QList<QUrl> QtPasteboard::files() const {
  QList<QUrl> local;
  for (const QUrl& url : mime_.urls())
    if (url.isLocalFile()) local.append(url);
  return local;
}

}  // namespace nomely
