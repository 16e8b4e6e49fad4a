#include "Desktop/Pictures/PictureFile.h"

#include <QPainter>
#include <QPainterPath>
#include <cerrno>
#include <optional>
#include <sstream>
#include <string>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/Audio/HelperProcess.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

constexpr auto program = "nomely-pictures";
constexpr int longestSide = 16384;

Descriptor openPicture(const std::filesystem::path& file) {
  Descriptor opened(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (opened.get() < 0 && (errno == ENOENT || errno == ENOTDIR))
    throw PictureError(PictureError::Kind::missing, "图片文件不在了");
  struct stat status {};
  if (opened.get() < 0 || ::fstat(opened.get(), &status) != 0 || !S_ISREG(status.st_mode))
    throw PictureError(PictureError::Kind::unreadable, "打不开这张图片");
  return opened;
}

// Of "picture WIDTH HEIGHT ..."; what else a program may have said is no size.
QSize sizeIn(const std::optional<std::string>& answer) {
  std::istringstream words(answer.value_or(""));
  std::string word;
  int width = 0;
  int height = 0;
  words >> word >> width >> height;
  const auto isSide = [](int side) { return side > 0 && side <= longestSide; };
  return word == "picture" && isSide(width) && isSide(height) ? QSize(width, height) : QSize();
}

QImage readPixels(int pixels, const QSize& size) {
  QImage image(size, QImage::Format_ARGB32_Premultiplied);
  auto* bytes = image.bits();
  for (qsizetype left = image.sizeInBytes(), at = 0; left > 0;) {
    const ssize_t count = ::pread(pixels, bytes + at, static_cast<std::size_t>(left), at);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return {};
    left -= count;
    at += count;
  }
  return image;
}

QImage rounded(const QImage& image, double radius) {
  QImage cut(image.size(), QImage::Format_ARGB32_Premultiplied);
  cut.fill(Qt::transparent);
  QPainterPath outline;
  outline.addRoundedRect(QRectF(QPointF(), QSizeF(image.size())), radius, radius);
  QPainter painter(&cut);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.fillPath(outline, QBrush(image));
  return cut;
}

}  // namespace

QImage PictureFile::decode(const std::filesystem::path& file, const PictureForm& form,
                           const std::stop_token& stop) {
  const Descriptor source = openPicture(file);
  const Descriptor pixels(::memfd_create("picture", MFD_CLOEXEC));
  HelperProcess process(
      {.program = program,
       .arguments = {form.fit == PictureForm::Fit::cover ? "cover" : "fit",
                     std::to_string(form.size.width()), std::to_string(form.size.height())},
       .input = source.get(),
       .file = pixels.get()});
  const auto answer = process.readLine(stop);
  const QSize size = sizeIn(answer);
  const QImage image = size.isEmpty() ? QImage() : readPixels(pixels.get(), size);
  if (image.isNull()) {
    Log::information(LogChannel::app, "nomely-pictures: {}", answer.value_or("ended early"));
    throw PictureError(PictureError::Kind::unreadable, "打不开这张图片");
  }
  return form.radius > 0 ? rounded(image, form.radius) : image;
}

}  // namespace nomely
