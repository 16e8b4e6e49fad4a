#pragma once

#include <stop_token>
#include <thread>

#include <signal.h>

namespace nomely {

// The exit status of an interrupted program.
inline constexpr int interruptedStatus = 130;

// While it lives, an interrupt (SIGINT) asks `stop` to stop instead of ending the process; a second
// one ends that at once with `interruptedStatus`. One at a time in a process.
class Interruption {
 public:
  explicit Interruption(std::stop_source stop);
  ~Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

 private:
  struct sigaction previous_ {};
  std::jthread watcher_;
};

}  // namespace nomely
