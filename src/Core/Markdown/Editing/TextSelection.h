#pragma once

#include <cstddef>
#include <limits>
#include <string_view>

#include "Platform/Text/RegularExpression.h"

namespace nomely {

// A selection as a text view tells it, in UTF-16 units. It may lie outside of the text.
struct TextSelection {
  // A `location` that stands for "no position".
  static constexpr std::size_t notFound = std::numeric_limits<std::size_t>::max();

  std::size_t location = 0;
  std::size_t length = 0;

  friend bool operator==(const TextSelection&, const TextSelection&) = default;
};

// The range of `text` that is meant. What lies outside of the text is cut off, and notFound counts
// as its end. A selection grows to whole surrogate pairs, and a caret inside a pair moves to before
// it, so that no edit splits one.
[[nodiscard]] TextRange normalized(TextSelection selection, std::u16string_view text);

}  // namespace nomely
