#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

#include "Platform/Concurrency/MainExecutor.h"

namespace nomely {

// A main executor without a window: whoever calls `run` or `runUntil` is the main thread, and it is
// the constructing thread until then.
class RunLoop final : public MainExecutor {
 public:
  void post(std::function<void()> job) override;
  [[nodiscard]] bool isCurrent() const override;

  // Runs jobs until `stop`.
  void run();
  // Makes `run` return after the jobs posted before. Safe on any thread.
  void stop();
  // Runs jobs until `done` holds, which is asked after every job; false when `limit` passed first.
  bool runUntil(const std::function<bool()>& done, std::chrono::milliseconds limit);

 private:
  static void runLogged(const std::function<void()>& job);

  mutable std::mutex mutex_;
  std::condition_variable posted_;
  std::deque<std::function<void()>> jobs_;
  bool stopping_ = false;
  std::thread::id thread_ = std::this_thread::get_id();
};

}  // namespace nomely
