#pragma once

#include <functional>
#include <stop_token>

namespace nomely {

// How long work on imports goes. A requested stop throws CancellationError between two notes.
struct ImportRun {
  std::stop_token stop = {};
  std::function<void(double share)> progress = {};  // 0 to 1
};

}  // namespace nomely
