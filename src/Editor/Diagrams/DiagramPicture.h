#pragma once

#include <stop_token>
#include <string>

#include "Platform/Error.h"

namespace nomely {

enum class DiagramLook { light, dark };

struct DiagramRequest {
  std::string code;
  DiagramLook look = DiagramLook::light;
  double scale = 1;  // pixels a point
};

// A diagram as it was drawn, transparent where it has nothing.
struct DiagramPicture {
  std::string png;
  double width = 0;   // of the picture, in points; 600 at most
  double height = 0;  // points, 50 to 20,000
};

class DiagramError : public Error {
 public:
  enum class Kind {
    missing,  // no program that draws is installed
    pages,    // it is, but not the pages that it draws on
    diagram,  // the source is no diagram; `what` is what the library says of it
    nothing,  // there would be nothing to see
    large,    // the source or its picture is too large
    slow,     // it took too long
    crashed,  // the program ended over it
  };

  DiagramError(Kind kind, const std::string& text);

  [[nodiscard]] Kind kind() const noexcept { return kind_; }

 private:
  Kind kind_;
};

// Makes a picture of a diagram's source.
class DiagramRenderer {
 public:
  virtual ~DiagramRenderer() = default;
  // Blocks until it is drawn. Throws DiagramError, and CancellationError when asked to stop. Safe
  // on any thread.
  [[nodiscard]] virtual DiagramPicture render(const DiagramRequest& request,
                                              const std::stop_token& stop) = 0;
};

}  // namespace nomely
