#pragma once

#include <cstddef>
#include <vector>

#include "Core/Query/MemoEntry.h"

namespace nomely {

// The steps that lead from one list of memos to another, so that a view keeps every row that stays.
// Pure. Two entries are the same row when they are the same memo, by identity, or by place while it
// has none; it changed when its contents were read anew or its day is another.
namespace ListDiff {

struct Step {
  enum class Kind { remove, insert, move, change };

  Kind kind = Kind::change;
  std::size_t first = 0;  // of the list as the steps before left it
  std::size_t count = 0;
  std::size_t to = 0;  // of a move: where the row stands afterwards

  friend bool operator==(const Step&, const Step&) = default;
};

[[nodiscard]] std::vector<Step> steps(const std::vector<MemoEntry>& before,
                                      const std::vector<MemoEntry>& after);

}  // namespace ListDiff

}  // namespace nomely
