#pragma once

#include <chrono>
#include <string>

#include "CLI/Session.h"

namespace nomely {

// How far work has come that takes more than a second, as a bar on standard error; nothing when
// that is no terminal or the user asked for quiet. Taken away at the end of its life. One thread.
class Progress {
 public:
  Progress(const Session& session, std::string label);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // `share` from 0 to 1.
  void show(double share);

 private:
  std::string label_;
  bool shown_;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  int percent_ = -1;
};

}  // namespace nomely
