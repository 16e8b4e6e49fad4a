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

// How many characters of white space, line breaks among them, stand at the start.
[[nodiscard]] std::size_t spaceLength(std::u16string_view line);

// A bullet, a task or a number and nothing more.
[[nodiscard]] bool isEmptyItem(std::u16string_view line);

// What the line after the item `line` begins with; absent when `line` is no item with text, and
// after a number of 100 or more: that is rather a year or an amount.
[[nodiscard]] std::optional<std::u16string> continuation(std::u16string_view line);

}  // namespace ListMarkers

}  // namespace nomely
