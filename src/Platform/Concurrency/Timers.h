#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace nomely {

// Calls that come later. What drives reconnecting, debouncing and counting seconds, so that tests
// run hours of it in milliseconds. Safe on any thread.
class Timers {
 public:
  // A call that is still to come; destroying or assigning over it cancels the call. A call that has
  // begun is not waited for.
  using Timer = std::shared_ptr<void>;

  virtual ~Timers() = default;

  // Runs `call` once, no sooner than `delay` from now, on the timers' own thread, where it must not
  // block: it posts to where the work is done. Calls due at the same moment keep their order.
  [[nodiscard]] virtual Timer after(std::chrono::milliseconds delay,
                                    std::function<void()> call) = 0;
};

// Of the monotonic clock: the time that a suspended machine sleeps counts. Its thread starts with
// the first timer.
[[nodiscard]] std::unique_ptr<Timers> makeSystemTimers();

}  // namespace nomely
