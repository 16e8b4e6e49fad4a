#include "Platform/Text/LineDiff.h"

#include <algorithm>

#include "Platform/Text/SequenceDiff.h"

namespace nomely {
namespace {

using Lines = std::span<const std::string_view>;

}  // namespace

std::vector<DiffHunk> lineDiff(Lines before, Lines after, std::size_t context) {
  using Kind = DiffLine::Kind;
  const SequenceChanges changes = sequenceDiff(before, after);
  std::vector<DiffHunk> hunks;
  std::size_t same = 0;  // unchanged lines since the last change
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < before.size() || j < after.size()) {
    const bool isRemoved = i < before.size() && changes.removed[i];
    const bool isAdded = !isRemoved && j < after.size() && changes.added[j];
    if (!isRemoved && !isAdded) {
      // Kept as what follows a change; what comes before the next one is added with that.
      if (!hunks.empty() && same < context) hunks.back().lines.push_back({Kind::same, before[i]});
      ++same, ++i, ++j;
      continue;
    }
    if (hunks.empty() || same > 2 * context) {
      const std::size_t leading = std::min(same, context);
      hunks.push_back({i - leading, j - leading, {}});
      same = leading + context;
    }
    for (std::size_t missing = same > context ? same - context : 0; missing > 0; --missing)
      hunks.back().lines.push_back({Kind::same, before[i - missing]});
    same = 0;
    if (isRemoved)
      hunks.back().lines.push_back({Kind::removed, before[i++]});
    else
      hunks.back().lines.push_back({Kind::added, after[j++]});
  }
  return hunks;
}

}  // namespace nomely
