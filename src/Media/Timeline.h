#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

namespace nomely::media {

// Where the pieces of a sound lie, in seconds from its beginning: as their own times say, unless
// these are broken; then each follows the one before.
class Timeline {
 public:
  // The time of a piece that tells none.
  static constexpr double unknown = std::numeric_limits<double>::quiet_NaN();
  // What lies apart less than this is joined.
  static constexpr double tolerance = 0.1;

  explicit Timeline(double begin = 0) : end_(begin) {}

  // Where a piece begins that says `start` and lasts `duration`.
  double add(double start, double duration) {
    const double gap = start - end_;
    // Else a small file could claim any number of hours.
    const bool isBroken = !(gap >= -tolerance && gap + gaps_ <= mostGaps);
    if (isBroken) start = end_;
    if (start - end_ > tolerance) gaps_ += gap;
    const double begin = std::max(start, 0.0);
    end_ = std::max(end_, start + duration);
    return begin;
  }
  [[nodiscard]] double end() const { return end_; }

 private:
  static constexpr double mostGaps = 3600;  // all together

  double end_;
  double gaps_ = 0;
};

}  // namespace nomely::media
