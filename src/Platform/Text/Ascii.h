#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <type_traits>

namespace nomely {

// Letters of ASCII in lower case; everything else stays as it is.

template <typename Character>
requires std::is_integral_v<Character>
[[nodiscard]] constexpr Character loweredAscii(Character c) {
  return c >= 'A' && c <= 'Z' ? static_cast<Character>(c | 0x20) : c;
}

[[nodiscard]] inline std::string loweredAscii(std::string_view text) {
  std::string lowered(text);
  for (char& c : lowered) c = loweredAscii(c);
  return lowered;
}

// Whether lowering makes the two equal.
[[nodiscard]] constexpr bool equalsIgnoringAsciiCase(std::string_view a, std::string_view b) {
  return std::ranges::equal(
      a, b, {}, [](char c) { return loweredAscii(c); }, [](char c) { return loweredAscii(c); });
}

}  // namespace nomely
