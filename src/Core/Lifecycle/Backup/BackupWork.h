#pragma once

#include <algorithm>
#include <functional>
#include <stop_token>

namespace nomely {

// How long work is watched and ended.
struct BackupWork {
  std::stop_token stop = {};                  // asked to stop: CancellationError
  std::function<void(double)> progress = {};  // the share done, 0 to 1; on the caller's thread

  // For a step of this work: what it reports goes from `from` to `to`.
  [[nodiscard]] BackupWork part(double from, double to) const {
    if (!progress) return *this;
    return {stop, [whole = progress, from, to](double share) {
              whole(from + (to - from) * std::clamp(share, 0.0, 1.0));
            }};
  }
};

}  // namespace nomely
