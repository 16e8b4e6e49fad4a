#pragma once

#include <string>

#include "CLI/Session.h"

namespace nomely {

// How far long work has come, as a bar on standard error; nothing when that is no terminal or the
// user asked for quiet. Taken away at the end of its life. One thread.
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
  int percent_ = -1;
};

}  // namespace nomely
