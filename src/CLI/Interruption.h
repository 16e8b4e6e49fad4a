#pragma once

#include <functional>
#include <stop_token>
#include <thread>
#include <utility>
#include <vector>

#include <signal.h>

namespace nomely {

// The exit status of an interrupted program.
inline constexpr int interruptedStatus = 130;

// While it lives, an interrupt (SIGINT) asks `stop` to stop instead of ending the process; a second
// one ends that at once with `interruptedStatus`. One at a time in a process.
class Interruption {
 public:
  explicit Interruption(std::stop_source stop) : Interruption(std::move(stop), {}) {}
  // For a process that stays: SIGTERM counts as an interrupt, and SIGHUP calls `onReload` on a
  // thread of this object's.
  Interruption(std::stop_source stop, std::function<void()> onReload);
  ~Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

 private:
  struct Handled {
    int signal;
    struct sigaction previous;
  };
  void handle(int signal);

  std::vector<Handled> handled_;
  std::jthread watcher_;
};

}  // namespace nomely
