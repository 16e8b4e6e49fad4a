#pragma once

#include <QImage>
#include <QSize>
#include <filesystem>
#include <stop_token>

#include "Platform/Error.h"

namespace nomely {

// A picture that can't be shown; `what()` is Chinese.
class PictureError : public Error {
 public:
  enum class Kind { missing, unreadable };
  PictureError(Kind kind, const std::string& text) : Error("picture", text), kind_(kind) {}
  [[nodiscard]] Kind kind() const noexcept { return kind_; }

 private:
  Kind kind_;
};

// What is wanted of a picture, in pixels of the screen.
struct PictureForm {
  enum class Fit {
    cover,  // scaled and cut to the size
    within  // scaled to lie within it, no larger than it is
  };
  QSize size;
  Fit fit = Fit::cover;
  double radius = 0;  // of its corners
};

namespace PictureFile {

// The picture in that form, upright. It is decoded by `nomely-pictures`, so foreign files are safe:
// what they are decides, not their name. Any thread. Throws PictureError, CancellationError at once
// when asked to stop.
[[nodiscard]] QImage decode(const std::filesystem::path& file, const PictureForm& form,
                            const std::stop_token& stop);

}  // namespace PictureFile

}  // namespace nomely
