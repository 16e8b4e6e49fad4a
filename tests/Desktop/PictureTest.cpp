#include <QBuffer>
#include <QImage>
#include <QPainter>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "Core/Models/AudioTranscript.h"
#include "Desktop/Pictures/PictureCache.h"
#include "Desktop/Pictures/PictureFile.h"
#include "Desktop/Pictures/ZoomFrame.h"
#include "Platform/Cancellation.h"
#include "Platform/Text/Replacing.h"
#include "Support/TemporaryFolder.h"
#include "Support/TestPaths.h"

namespace nomely::test {
namespace {

using namespace std::string_literals;

using Fit = PictureForm::Fit;
using Kind = PictureError::Kind;

QImage halves(const QSize& size, QImage::Format format = QImage::Format_RGB32) {
  QImage image(size, format);
  image.fill(Qt::blue);
  if (format != QImage::Format_RGB32) return image;
  QPainter(&image).fillRect(0, 0, size.width() / 2, size.height(), Qt::red);
  return image;
}

std::string bytesOf(const QImage& image, const char* format) {
  QBuffer buffer;
  image.save(&buffer, format);
  return buffer.data().toStdString();
}

// A JPEG whose camera lay on its side.
std::string turned(std::string jpeg) {
  return jpeg.insert(2,
                     "\xFF\xE1\0\x22"
                     "Exif\0\0II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0\x06\0\0\0\0\0\0\0"s);
}

class PictureTest : public testing::Test {
 protected:
  [[nodiscard]] static std::string heic() {
    return readFile(fs::path(TestPaths::fixtures) / "halves.heic");
  }
  [[nodiscard]] QImage decode(const std::string& content, const PictureForm& form) const {
    writeFile(file, content);
    return PictureFile::decode(file, form, {});
  }

  TemporaryFolder folder;
  fs::path file = folder.path() / "picture.gif";  // which few of them are
};

TEST_F(PictureTest, EveryKindIsUprightCutAndRound) {
  const std::string jpeg = bytesOf(halves({800, 300}), "JPG");
  for (const auto& content :
       {jpeg, bytesOf(halves({800, 300}), "PNG"), bytesOf(halves({800, 300}), "WEBP"),
        bytesOf(halves({80, 30}), "BMP"), heic()}) {
    const QImage cut = decode(content, {.size = {100, 60}, .radius = 8});
    ASSERT_EQ(cut.size(), QSize(100, 60));
    EXPECT_GT(qRed(cut.pixel(30, 30)), 200);
    EXPECT_GT(qBlue(cut.pixel(70, 30)), 200);
    EXPECT_EQ(qAlpha(cut.pixel(0, 0)), 0);
    EXPECT_EQ(qAlpha(cut.pixel(50, 0)), 255);
  }
  const QImage upright = decode(turned(jpeg), {.size = {200, 200}, .fit = Fit::within});
  EXPECT_EQ(upright.size(), QSize(75, 200));
  EXPECT_GT(qRed(upright.pixel(37, 20)), 200);
  EXPECT_EQ(decode(jpeg, {.size = {4000, 4000}, .fit = Fit::within}).size(), QSize(800, 300));
}

TEST_F(PictureTest, WhatIsNoPictureIsRefusedQuickly) {
  const std::string png = bytesOf(halves({800, 300}), "PNG");
  for (
      const auto& [name, content] : std::vector<std::pair<const char*, std::string>>{
          {"nothing", ""},
          {"text", "no picture"},
          {"cut off in its header", png.substr(0, 20)},
          {"thirty thousand pixels square",
           bytesOf(QImage(30000, 30000, QImage::Format_Mono), "PNG")},
          {"a film of four thousand million pixels",
           "GIF89a\xFF\xFF\xFF\xFF\x80\0\0\0\0\0\xFF\xFF\xFF,\0\0\0\0\xFF\xFF\xFF\xFF\0\x02\x02\x44\x01\0;"s},
          {"a drawing that names a file",
           "<svg xmlns='http://www.w3.org/2000/svg'><image href='/etc/passwd'/></svg>"},
          {"of a telephone, cut off in its boxes", heic().substr(0, 400)},
          {"of a telephone, cut off in its pixels", heic().substr(0, 500)},
          {"of a telephone, four thousand million pixels",
           // The sizes of the grid, of its tile and of both in their own boxes.
           replacingAll(replacingAll(heic(), "\0\xA0\0\x3C"s, "\xFF\xFF\xFF\xFF"), "\0\0\0\xA0"s,
                        "\0\0\xFF\xFF"s)},
          {"of a telephone, in boxes that hold themselves",
           heic().substr(0, 24) + "\0\0\0\1meta"s + std::string(16, '\xFF')},
          {"a drawing in disguise",
           "\x89PNG\r\n\x1A\n<svg xmlns='http://www.w3.org/2000/svg'/>"}}) {
    SCOPED_TRACE(name);
    EXPECT_THROW((void)decode(content, {.size = {100, 100}}), PictureError);
  }
  const auto kind = [](const fs::path& path) {
    try {
      (void)PictureFile::decode(path, {.size = {10, 10}}, {});
    } catch (const PictureError& error) {
      return std::optional(error.kind());
    }
    return std::optional<Kind>();
  };
  ASSERT_EQ(::mkfifo((folder.path() / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(kind(folder.path() / "none.png"), Kind::missing);
  for (const fs::path& path : {folder.path() / "pipe", folder.path(), fs::path("/dev/zero")})
    EXPECT_EQ(kind(path), Kind::unreadable) << path;
  std::stop_source stopped;
  stopped.request_stop();
  writeFile(file, png);
  EXPECT_THROW((void)PictureFile::decode(file, {.size = {9, 9}}, stopped.get_token()),
               CancellationError);
}

TEST(PictureCacheTest, KeepsWhatWasShownLastWithinItsBytes) {
  PictureCache cache(4 * 4000);
  const auto insert = [&](const char* key, int rows) { cache.insert(key, halves({100, rows})); };
  for (const char* key : {"a", "b", "c", "d"}) insert(key, 10);
  EXPECT_TRUE(cache.find("a"));
  insert("e", 10);
  insert("large", 11);
  EXPECT_EQ(cache.bytes(), 16000U);
  EXPECT_FALSE(cache.find("b"));
  EXPECT_FALSE(cache.find("large"));
  EXPECT_TRUE(cache.find("a"));
}

TEST(ZoomFrameTest, WhatIsUnderThePointerStaysAndNoEdgeComesInside) {
  ZoomFrame frame;
  frame.setView({1000, 500});
  frame.setPicture({400, 400});
  EXPECT_EQ(frame.frame(), QRectF(300, 50, 400, 400));
  frame.zoomBy(2, {500, 250});
  EXPECT_EQ(frame.frame(), QRectF(100, -150, 800, 800));
  frame.moveBy(50, 10000);
  EXPECT_EQ(frame.frame(), QRectF(100, 0, 800, 800));
  frame.zoomBy(1000);
  EXPECT_EQ(frame.zoom(), ZoomFrame::largest);
  frame.zoomBy(0.001);
  EXPECT_EQ(frame.frame(), QRectF(300, 50, 400, 400));
}

}  // namespace
}  // namespace nomely::test
