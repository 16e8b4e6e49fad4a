#include "Platform/Text/SequenceDiff.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <optional>
#include <unordered_map>

namespace nomely {
namespace {

using Pieces = std::span<const std::string_view>;
using Index = std::ptrdiff_t;

// Pieces as numbers that are equal where the pieces are.
class Numbering {
 public:
  std::vector<Index> operator()(Pieces pieces) {
    std::vector<Index> result;
    result.reserve(pieces.size());
    for (const std::string_view piece : pieces)
      result.push_back(
          numbers_.try_emplace(piece, static_cast<Index>(numbers_.size())).first->second);
    return result;
  }

 private:
  std::unordered_map<std::string_view, Index> numbers_;
};

// The furthest x that a walk has reached on each diagonal x - y.
class Reach {
 public:
  Reach(Index least, Index most)
      : offset_(1 - least), x_(static_cast<std::size_t>(most - least + 3)) {}
  Index& operator[](Index diagonal) { return x_[static_cast<std::size_t>(diagonal + offset_)]; }

 private:
  Index offset_;
  std::vector<Index> x_;
};

// Myers, "An O(ND) Difference Algorithm and Its Variations" (1986), in its linear space: walks from
// both ends meet in the middle of a shortest way, which parts the problem in two.
class ShortestEdit {
 public:
  ShortestEdit(std::vector<Index> before, std::vector<Index> after, SequenceChanges& changes)
      : before_(std::move(before)),
        after_(std::move(after)),
        forward_(-sizeOf(after_), sizeOf(before_)),
        backward_(-sizeOf(after_), sizeOf(before_)),
        changes_(changes) {}

  void mark() { mark({0, 0, sizeOf(before_), sizeOf(after_)}); }

 private:
  // Pieces x0 to x1 of the first, y0 to y1 of the second.
  struct Box {
    Index x0, y0, x1, y1;
  };
  struct Point {
    Index x, y;
  };
  // The diagonals that a walk has come to.
  struct Front {
    Index least, most;
  };

  // A walk that hasn't met the other by then takes the place where it came furthest.
  static constexpr Index mostEdits = 256;
  static constexpr Index beyond = std::numeric_limits<Index>::max();

  static Index sizeOf(const std::vector<Index>& pieces) {
    return static_cast<Index>(pieces.size());
  }
  [[nodiscard]] bool isSame(Index x, Index y) const {
    return before_[static_cast<std::size_t>(x)] == after_[static_cast<std::size_t>(y)];
  }

  void mark(Box box) {
    for (;;) {
      while (box.x0 < box.x1 && box.y0 < box.y1 && isSame(box.x0, box.y0)) ++box.x0, ++box.y0;
      while (box.x0 < box.x1 && box.y0 < box.y1 && isSame(box.x1 - 1, box.y1 - 1))
        --box.x1, --box.y1;
      const auto middle = box.x0 == box.x1 || box.y0 == box.y1 ? std::nullopt : middleOf(box);
      if (!middle) break;
      mark({box.x0, box.y0, middle->x, middle->y});
      box.x0 = middle->x;
      box.y0 = middle->y;
    }
    std::fill(changes_.removed.begin() + box.x0, changes_.removed.begin() + box.x1, true);
    std::fill(changes_.added.begin() + box.y0, changes_.added.begin() + box.y1, true);
  }

  // Takes the front one edit further; it never leaves the box's diagonals.
  static void widen(Front& front, const Box& box, Reach& reach, Index unreached) {
    if (front.least > box.x0 - box.y1)
      reach[--front.least - 1] = unreached;
    else
      ++front.least;
    if (front.most < box.x1 - box.y0)
      reach[++front.most + 1] = unreached;
    else
      --front.most;
  }

  // Absent when there is none but the box's own corner.
  std::optional<Point> middleOf(const Box& box) {
    const Index start = box.x0 - box.y0;
    const Index end = box.x1 - box.y1;
    const bool isOdd = (start - end) % 2 != 0;
    Front ahead{start, start};
    Front back{end, end};
    forward_[start] = box.x0;
    backward_[end] = box.x1;
    for (Index edits = 1; edits <= mostEdits; ++edits) {
      widen(ahead, box, forward_, -1);
      for (Index k = ahead.most; k >= ahead.least; k -= 2) {
        Index x = std::max(forward_[k - 1] + 1, forward_[k + 1]);
        while (x < box.x1 && x - k < box.y1 && isSame(x, x - k)) ++x;
        forward_[k] = x;
        if (isOdd && back.least <= k && k <= back.most && backward_[k] <= x) return Point{x, x - k};
      }
      widen(back, box, backward_, beyond);
      for (Index k = back.most; k >= back.least; k -= 2) {
        Index x = std::min(backward_[k - 1], backward_[k + 1] - 1);
        while (x > box.x0 && x - k > box.y0 && isSame(x - 1, x - k - 1)) --x;
        backward_[k] = x;
        if (!isOdd && ahead.least <= k && k <= ahead.most && x <= forward_[k])
          return Point{x, x - k};
      }
    }
    return furthest(box, ahead);
  }

  std::optional<Point> furthest(const Box& box, const Front& ahead) {
    std::optional<Point> best;
    for (Index k = ahead.most; k >= ahead.least; k -= 2) {
      const Index x = std::min({forward_[k], box.x1, box.y1 + k});
      const Index sum = x + x - k;
      if (sum < box.x1 + box.y1 && (!best || sum > best->x + best->y)) best = Point{x, x - k};
    }
    return best;
  }

  std::vector<Index> before_;
  std::vector<Index> after_;
  Reach forward_;
  Reach backward_;
  SequenceChanges& changes_;
};

}  // namespace

SequenceChanges sequenceDiff(Pieces before, Pieces after) {
  SequenceChanges changes{std::vector<bool>(before.size()), std::vector<bool>(after.size())};
  Numbering numbered;
  std::vector<Index> older = numbered(before);
  ShortestEdit(std::move(older), numbered(after), changes).mark();
  return changes;
}

}  // namespace nomely
