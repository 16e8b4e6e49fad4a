#pragma once

#include <cstddef>
#include <limits>
#include <string_view>

#include "Platform/Text/RegularExpression.h"

namespace nomely {

// A selection as a text view tells it, in UTF-16 units. It may lie outside of the text.
struct TextSelection {
  // A location that marks no position.
  static constexpr std::size_t notFound = std::numeric_limits<std::size_t>::max();

  std::size_t location = 0;
  std::size_t length = 0;

  friend bool operator==(const TextSelection&, const TextSelection&) = default;
};

// The part of `text` that is meant: what lies outside is cut off, and what marks no position is the
// end. A selection grows to whole characters, and a caret inside of one goes before it, so
// that no edit parts a surrogate pair.
[[nodiscard]] TextRange normalized(TextSelection selection, std::u16string_view text);

}  // namespace nomely
