#pragma once

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QUrl>
#include <optional>
#include <string>
#include <vector>

#include "Core/Markdown/Clipboard/Pasteboard.h"

class QMimeData;

namespace nomely {

// A picture that a clipboard or a drop offers: as the bytes of a file where it has them, else as
// pixels.
struct OfferedPicture {
  QByteArray bytes;
  std::string extension;  // of `bytes`
  QImage pixels;

  // The bytes of a file of it, and its extension. Slow for pixels; any thread.
  struct File {
    std::string bytes;
    std::string extension;
  };
  [[nodiscard]] File file() const;
};

// What a clipboard, or something dropped, offers. `mime` must outlive it.
class QtPasteboard final : public Pasteboard {
 public:
  explicit QtPasteboard(const QMimeData& mime) : mime_(mime) {}

  [[nodiscard]] bool hasImages() const override;
  [[nodiscard]] std::optional<std::string> html() const override;
  [[nodiscard]] std::optional<std::string> richText() const override;

  [[nodiscard]] OfferedPicture picture() const;
  // Files of this machine: what a file manager copies.
  [[nodiscard]] QList<QUrl> files() const;

 private:
  const QMimeData& mime_;
};

}  // namespace nomely
