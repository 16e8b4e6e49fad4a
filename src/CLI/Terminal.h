#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "Platform/System/Environment.h"

namespace nomely {

enum class ColorMode { automatic, always, never };

// Colours and weights for a terminal; texts pass unchanged when it is off.
class Style {
 public:
  explicit Style(bool enabled) : enabled_(enabled) {}

  [[nodiscard]] bool isEnabled() const { return enabled_; }

  [[nodiscard]] std::string bold(std::string_view text) const { return wrap("1", text); }
  [[nodiscard]] std::string dim(std::string_view text) const { return wrap("2", text); }
  [[nodiscard]] std::string tag(std::string_view text) const { return wrap("36", text); }
  [[nodiscard]] std::string warning(std::string_view text) const { return wrap("33", text); }
  [[nodiscard]] std::string error(std::string_view text) const { return wrap("31", text); }
  // Any of the terminal's codes, parted by semicolons.
  [[nodiscard]] std::string withCodes(std::string_view codes, std::string_view text) const {
    return wrap(codes, text);
  }

 private:
  [[nodiscard]] std::string wrap(std::string_view code, std::string_view text) const;

  bool enabled_;
};

// The three standard streams of this process.
namespace Terminal {

[[nodiscard]] bool isInput();
[[nodiscard]] bool isOutput();
[[nodiscard]] bool isError();
// Of standard output; 80 where that is no terminal.
[[nodiscard]] std::size_t columns();
[[nodiscard]] Style styleFor(ColorMode mode, bool isTerminal, const Environment& environment);

// Platform/Text/Printable.h's.
[[nodiscard]] std::string printable(std::string_view text);

}  // namespace Terminal

}  // namespace nomely
