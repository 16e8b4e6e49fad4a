#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <stop_token>
#include <thread>
#include <vector>

namespace nomely {

// Background jobs on a fixed number of threads, each started when a job first needs it. Jobs of
// higher priority start first; within one priority, in the order of submission. Destruction asks
// every job to stop, drops those that have not begun, and waits for the rest. Safe on any thread.
class JobPool {
 public:
  enum class Priority { userInitiated, utility };

  // Cancels on request; dropping the handle does not.
  class Handle {
   public:
    Handle() = default;
    void cancel() { source_.request_stop(); }
    [[nodiscard]] bool isCancelled() const { return source_.stop_requested(); }

   private:
    friend class JobPool;
    explicit Handle(std::stop_source source) : source_(std::move(source)) {}
    std::stop_source source_{std::nostopstate};
  };

  // `threads` 0: one per core.
  explicit JobPool(std::size_t threads = 0);
  ~JobPool();
  JobPool(const JobPool&) = delete;
  JobPool& operator=(const JobPool&) = delete;

  // A job that was cancelled before it began still runs, with its token already stopped, so that
  // it can report its end. An exception that escapes it is logged.
  Handle submit(std::function<void(std::stop_token)> job,
                Priority priority = Priority::userInitiated);

  // Runs body(0)...body(count - 1) on the pool's threads and the caller's, and returns when all
  // have ended. Rethrows the first exception, after which the rest is not begun.
  void parallelFor(std::size_t count, const std::function<void(std::size_t)>& body);

 private:
  struct Job {
    std::function<void(std::stop_token)> run;
    std::stop_source source;
  };

  void work(std::stop_token stopping);
  static void runLogged(Job& job);

  std::mutex mutex_;
  std::condition_variable_any available_;
  std::array<std::deque<std::shared_ptr<Job>>, 2> waiting_;  // by priority
  std::vector<std::shared_ptr<Job>> running_;
  bool closing_ = false;
  std::size_t limit_;
  std::vector<std::jthread> threads_;
};

}  // namespace nomely
