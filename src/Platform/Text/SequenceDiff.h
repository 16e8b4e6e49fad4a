#pragma once

#include <span>
#include <string_view>
#include <vector>

namespace nomely {

// Which pieces of two sequences the other lacks; the rest stands in both, in the same order.
struct SequenceChanges {
  std::vector<bool> removed;  // of the first
  std::vector<bool> added;    // of the second
};

// What turns `before` into `after` with the fewest removed and added pieces, or nearly so where the
// two have so little in common that finding the fewest would take long: 100,000 pieces take less
// than a second whatever they are. Memory grows with the number of pieces. Pure.
[[nodiscard]] SequenceChanges sequenceDiff(std::span<const std::string_view> before,
                                           std::span<const std::string_view> after);

}  // namespace nomely
