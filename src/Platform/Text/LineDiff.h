#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace nomely {

struct DiffLine {
  enum class Kind { same, removed, added };

  Kind kind = Kind::same;
  std::string_view text;

  friend bool operator==(const DiffLine&, const DiffLine&) = default;
};

// A stretch of changes that lie close together, with the unchanged lines around them.
struct DiffHunk {
  std::size_t firstBefore = 0;  // the index of its first line in either text
  std::size_t firstAfter = 0;
  std::vector<DiffLine> lines;
};

// What turns `before` into `after`, by sequenceDiff's changes; no hunks for equal texts. The hunks'
// texts are parts of the arguments. Pure.
[[nodiscard]] std::vector<DiffHunk> lineDiff(std::span<const std::string_view> before,
                                             std::span<const std::string_view> after,
                                             std::size_t context = 3);

}  // namespace nomely
