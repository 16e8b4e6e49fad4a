#pragma once

#include <QByteArray>
#include <QFile>
#include <QImage>
#include <QSize>
#include <memory>

namespace nomely::media {

// A picture as telephones take it: HEIF with HEVC inside. Its library is loaded with the first one,
// where it was there when this program was built and is there now.
class HeifPicture {
 public:
  // Whether a file that begins so is one.
  [[nodiscard]] static bool isAt(const QByteArray& begin);

  // Loads the library, and the file, which has to stay open; nothing of it is looked at yet.
  explicit HeifPicture(QFile& file);
  ~HeifPicture();

  // Both are upright, and empty for what can't be read.
  [[nodiscard]] QSize size();
  [[nodiscard]] QImage read();

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace nomely::media
