#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace nomely {

// The marks at the start of a line that make it a heading or a list item. Each takes one line
// without its line feed, in time linear in its length. Pure.
namespace ListMarkers {

// The length of what ^\s{0,3}#{1,6}\s* matches; 0 without a match.
[[nodiscard]] std::size_t headingLength(std::u16string_view line);

struct Number {
  std::optional<std::int64_t> value;  // absent when it is not in ASCII or does not fit
  std::size_t length = 0;             // of the digits and the dot
};
// What ^\d+\. matches.
[[nodiscard]] std::optional<Number> number(std::u16string_view line);

// The number of white space characters at the start, line breaks included.
[[nodiscard]] std::size_t spaceLength(std::u16string_view line);

// Whether the line is a bullet, a task or a number followed by nothing but white space: "- ", "3.".
[[nodiscard]] bool isEmptyItem(std::u16string_view line);

// What the line after the item `line` begins with: "- [x] tea" → "- [ ] ", "  9. tea" → "  10. ".
// Absent when `line` is no item with text, or its number is 100 or more: that is rather a year or
// an amount.
[[nodiscard]] std::optional<std::u16string> continuation(std::u16string_view line);

}  // namespace ListMarkers

}  // namespace nomely
