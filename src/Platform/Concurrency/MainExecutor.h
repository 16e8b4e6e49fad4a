#pragma once

#include <functional>

namespace nomely {

// The one thread on which observable state lives.
class MainExecutor {
 public:
  virtual ~MainExecutor() = default;
  // Runs `job` there later, in the order of posting. Safe on any thread.
  virtual void post(std::function<void()> job) = 0;
  // Whether the calling thread is that one.
  [[nodiscard]] virtual bool isCurrent() const = 0;
};

}  // namespace nomely
