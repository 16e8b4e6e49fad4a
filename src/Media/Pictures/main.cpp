// Decodes a foreign picture in a process of its own, for the window: a decoder that crashes, takes
// gigabytes or never ends takes nothing with it.
//
//   nomely-pictures cover WIDTH HEIGHT   the picture on descriptor 0, scaled and cut to that size
//   nomely-pictures fit WIDTH HEIGHT     scaled to lie within it, never larger than it is
//
// The pixels go into the file on 3, rows of premultiplied ARGB words, and "picture WIDTH HEIGHT
// OWN-WIDTH OWN-HEIGHT" tells of them. A failure is the line "error KIND" and status 1.
#include <QByteArray>
#include <QFile>
#include <QImage>
#include <QImageReader>
#include <QThreadPool>
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <unistd.h>
#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/common_interface_defs.h>
#endif

#include "Media/Answers.h"
#include "Media/Confinement.h"
#include "Media/Pictures/HeifPicture.h"

namespace nomely::media {
namespace {

constexpr int pixels = 3;        // a descriptor
constexpr int mostSeconds = 20;  // of a decoder
constexpr std::uint64_t mostMemory = std::uint64_t{1} << 30;
constexpr int longestSide = 16384;                        // that is asked for
constexpr qint64 mostPixels = qint64{250} * 1000 * 1000;  // of a picture

struct Wanted {
  bool cuts = false;
  QSize size;
};

// The reader's name for what the file is by its first bytes; empty for what isn't shown.
QByteArray formatOf(const QByteArray& begin) {
  if (begin.startsWith("\xFF\xD8\xFF")) return "jpeg";
  if (begin.startsWith("\x89PNG\r\n\x1A\n")) return "png";
  if (begin.startsWith("GIF8")) return "gif";
  if (begin.startsWith("RIFF") && begin.mid(8, 4) == "WEBP") return "webp";
  if (begin.startsWith("BM")) return "bmp";
  return {};
}

// The size to which one of `own` is scaled.
QSize scaledSize(const QSize& own, const Wanted& wanted) {
  if (wanted.cuts) return own.scaled(wanted.size, Qt::KeepAspectRatioByExpanding);
  if (own.width() <= wanted.size.width() && own.height() <= wanted.size.height()) return own;
  return own.scaled(wanted.size, Qt::KeepAspectRatio).expandedTo({1, 1});
}

// Readers that skip pixels get twice as many to skip, since it shows.
QSize readSize(const QSize& own, const QSize& scaled, const QByteArray& format) {
  if (format != "png") return scaled;
  const QSize twice = scaled * 2;
  return twice.width() < own.width() ? twice : own;
}

class PictureFailure : public std::exception {
 public:
  explicit PictureFailure(const char* kind) : kind_(kind) {}
  [[nodiscard]] const char* what() const noexcept override { return kind_; }

 private:
  const char* kind_;
};

struct Picture {
  QImage image;
  QSize own;
};

void check(const QSize& own) {
  if (own.isEmpty()) throw PictureFailure("damaged");
  if (qint64{own.width()} * own.height() > mostPixels) throw PictureFailure("large");
}

// Scaled and cut; a picture of another size was read larger.
Picture finished(QImage image, const QSize& own, const Wanted& wanted) {
  if (image.isNull()) throw PictureFailure("damaged");
  const QSize scaled = scaledSize(own, wanted);
  if (image.size() != scaled)
    image = image.scaled(scaled, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
  if (wanted.cuts) {
    const QPoint corner((scaled.width() - wanted.size.width()) / 2,
                        (scaled.height() - wanted.size.height()) / 2);
    image = image.copy(QRect(corner, wanted.size));
  }
  return {image.convertToFormat(QImage::Format_ARGB32_Premultiplied), own};
}

Picture decodeHeif(QFile& file, const Wanted& wanted) {
  HeifPicture picture(file);
  confine(mostMemory, Threads::some);
  const QSize own = picture.size();
  check(own);
  return finished(picture.read(), own, wanted);
}

Picture decode(QFile& file, const Wanted& wanted) {
  const QByteArray begin = file.peek(16);
  if (HeifPicture::isAt(begin)) return decodeHeif(file, wanted);
  const QByteArray format = formatOf(begin);
  if (format.isEmpty()) throw PictureFailure("unknown");
  QImageReader::setAllocationLimit(1024);
  QImageReader reader(&file, format);
  reader.setAutoTransform(true);
  (void)reader.canRead();  // loads the plugin, which later can't be opened
  confine(mostMemory);

  QSize own = reader.size();
  check(own);
  const bool isTurned = (reader.transformation() & QImageIOHandler::TransformationRotate90) != 0;
  if (isTurned) own.transpose();
  const QSize scaled = scaledSize(own, wanted);
  QSize read = readSize(own, scaled, format);
  if (isTurned) read.transpose();
  if (reader.supportsOption(QImageIOHandler::ScaledSize)) reader.setScaledSize(read);
  return finished(reader.read(), own, wanted);
}

void writeAll(const QImage& image) {
  for (int row = 0; row < image.height(); ++row) {
    std::string_view left(reinterpret_cast<const char*>(image.constScanLine(row)),
                          static_cast<std::size_t>(image.width()) * 4);
    while (!left.empty()) {
      const ssize_t count = ::write(pixels, left.data(), left.size());
      if (count <= 0) throw PictureFailure("output");
      left.remove_prefix(static_cast<std::size_t>(count));
    }
  }
}

// What a decoder has to say of a damaged file is no news to whoever reads the window's log. Qt asks
// a handler first; libraries below it write straight to the error output.
void silence() {
  qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
#ifdef __SANITIZE_ADDRESS__
  __sanitizer_set_report_fd(reinterpret_cast<void*>(static_cast<std::intptr_t>(::dup(2))));
#endif
  if (const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC); nowhere >= 0)
    ::dup2(nowhere, STDERR_FILENO);
}

int run(const Wanted& wanted) {
  const Answers answers(STDOUT_FILENO);
  try {
    QFile file;
    if (!file.open(STDIN_FILENO, QIODevice::ReadOnly)) throw PictureFailure("damaged");
    const auto [image, own] = decode(file, wanted);
    writeAll(image);
    std::string answer = "picture";
    for (const int number : {image.width(), image.height(), own.width(), own.height()})
      answer += " " + std::to_string(number);
    answers.line(answer);
    return 0;
  } catch (const std::exception& error) {
    answers.line(std::string("error ") + error.what());
    return 1;
  }
}

}  // namespace
}  // namespace nomely::media

int main(int count, char** arguments) {
  if (count != 4) return 2;
  const auto side = [&](int index) {
    return std::clamp(std::atoi(arguments[index]), 1, nomely::media::longestSide);
  };
  const nomely::media::Wanted wanted{.cuts = std::string_view(arguments[1]) == "cover",
                                     .size = {side(2), side(3)}};
  ::alarm(nomely::media::mostSeconds);
  nomely::media::silence();
  // Nobody waits for a picture as for a key.
  (void)::nice(10);
  // On the thread of the pool: there large pictures are scaled without more threads, which a
  // confined process can't start.
  int status = 1;
  QThreadPool::globalInstance()->setMaxThreadCount(1);
  QThreadPool::globalInstance()->start([&] { status = nomely::media::run(wanted); });
  QThreadPool::globalInstance()->waitForDone();
  ::_exit(status);
}
