#pragma once

#include <cstddef>
#include <string_view>

namespace nomely {

// The figure shown as a memo's length. Pure.
namespace TextStats {

// Ideographs and Latin words; "don't" and "well-known" are one word each. Blanks, punctuation,
// digits and other scripts count for nothing.
[[nodiscard]] std::size_t meaningfulCount(std::string_view text);

}  // namespace TextStats

}  // namespace nomely
