#pragma once

#include <functional>
#include <stop_token>

namespace nomely {

// How long work is watched and ended.
struct BackupWork {
  std::stop_token stop = {};                  // asked to stop: CancellationError
  std::function<void(double)> progress = {};  // the share done, 0 to 1; on the caller's thread
};

}  // namespace nomely
