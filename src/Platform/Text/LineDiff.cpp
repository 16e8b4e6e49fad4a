#include "Platform/Text/LineDiff.h"

#include <algorithm>
#include <unordered_map>

namespace nomely {
namespace {

using Lines = std::span<const std::string_view>;
using Index = std::ptrdiff_t;

// Which lines of two texts are not in the other.
struct Changes {
  std::vector<bool> removed;
  std::vector<bool> added;
};

// Lines as numbers that are equal where the lines are.
class Numbering {
 public:
  std::vector<Index> operator()(Lines lines) {
    std::vector<Index> result;
    result.reserve(lines.size());
    for (const std::string_view line : lines)
      result.push_back(
          numbers_.try_emplace(line, static_cast<Index>(numbers_.size())).first->second);
    return result;
  }

 private:
  std::unordered_map<std::string_view, Index> numbers_;
};

// Myers, "An O(ND) Difference Algorithm and Its Variations" (1986): `reach_` holds, for each
// diagonal k = x - y, how far x gets with d edits. A copy of every round leads the way back.
class ShortestEdit {
 public:
  ShortestEdit(std::vector<Index> before, std::vector<Index> after)
      : before_(std::move(before)),
        after_(std::move(after)),
        middle_(static_cast<Index>(before_.size() + after_.size()) + 1),
        reach_(static_cast<std::size_t>(2 * middle_ + 1)) {}

  // False when it takes more than `mostEdits`.
  bool find() {
    for (Index d = 0; d <= std::min(mostEdits, middle_ - 1); ++d) {
      rounds_.emplace_back(reach_.begin() + (middle_ - d - 1), reach_.begin() + (middle_ + d + 2));
      for (Index k = -d; k <= d; k += 2) {
        const Index x = slide(startOf(k, d, [&](Index diagonal) { return at(diagonal); }), k);
        if (x == sizeOf(before_) && x - k == sizeOf(after_)) return true;
        at(k) = x;
      }
    }
    return false;
  }

  // After find() was true: marks the lines from `offset` on.
  void mark(Changes& changes, std::size_t offset) const {
    Index k = sizeOf(before_) - sizeOf(after_);
    for (Index d = static_cast<Index>(rounds_.size()) - 1; d > 0; --d) {
      const auto& round = rounds_[static_cast<std::size_t>(d)];
      const auto reached = [&](Index diagonal) {
        return round[static_cast<std::size_t>(diagonal + d + 1)];
      };
      const Index x = startOf(k, d, reached);
      const bool isAdded = goesDown(k, d, reached);
      if (isAdded)
        changes.added[offset + static_cast<std::size_t>(x - k - 1)] = true;
      else
        changes.removed[offset + static_cast<std::size_t>(x - 1)] = true;
      k += isAdded ? 1 : -1;
    }
  }

 private:
  static constexpr Index mostEdits = 1000;

  static Index sizeOf(const std::vector<Index>& lines) { return static_cast<Index>(lines.size()); }
  Index& at(Index diagonal) { return reach_[static_cast<std::size_t>(middle_ + diagonal)]; }

  // Whether the d-th edit on the way to diagonal k adds a line.
  template <typename Reached>
  static bool goesDown(Index k, Index d, Reached reached) {
    return k == -d || (k != d && reached(k - 1) < reached(k + 1));
  }
  // x after that edit.
  template <typename Reached>
  static Index startOf(Index k, Index d, Reached reached) {
    return goesDown(k, d, reached) ? reached(k + 1) : reached(k - 1) + 1;
  }
  [[nodiscard]] Index slide(Index x, Index k) const {
    while (x < sizeOf(before_) && x - k < sizeOf(after_) &&
           before_[static_cast<std::size_t>(x)] == after_[static_cast<std::size_t>(x - k)])
      ++x;
    return x;
  }

  std::vector<Index> before_;
  std::vector<Index> after_;
  Index middle_;  // where diagonal 0 lies in reach_
  std::vector<Index> reach_;
  std::vector<std::vector<Index>> rounds_;  // of diagonals -d-1 to d+1, before round d
};

Changes changesOf(Lines before, Lines after) {
  Changes changes{std::vector<bool>(before.size()), std::vector<bool>(after.size())};
  const auto start =
      static_cast<std::size_t>(std::ranges::mismatch(before, after).in1 - before.begin());
  before = before.subspan(start);
  after = after.subspan(start);
  while (!before.empty() && !after.empty() && before.back() == after.back()) {
    before = before.first(before.size() - 1);
    after = after.first(after.size() - 1);
  }
  Numbering numbered;
  std::vector<Index> older = numbered(before);
  ShortestEdit edit(std::move(older), numbered(after));
  if (edit.find()) {
    edit.mark(changes, start);
  } else {
    std::fill_n(changes.removed.begin() + static_cast<Index>(start), before.size(), true);
    std::fill_n(changes.added.begin() + static_cast<Index>(start), after.size(), true);
  }
  return changes;
}

}  // namespace

std::vector<DiffHunk> lineDiff(Lines before, Lines after, std::size_t context) {
  using Kind = DiffLine::Kind;
  const Changes changes = changesOf(before, after);
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
