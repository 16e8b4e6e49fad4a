#pragma once

#include <cstddef>
#include <string_view>

namespace nomely {

// The figure shown as a memo's length. Pure.
namespace TextStats {

// Each ideograph and each Latin word counts 1: "我 don't know" → 3. "don't" and "well-known" are
// one word each; blanks, punctuation, digits and other scripts count 0.
[[nodiscard]] std::size_t meaningfulCount(std::string_view text);

}  // namespace TextStats

}  // namespace nomely
