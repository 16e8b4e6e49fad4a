#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <stop_token>
#include <thread>
#include <vector>

namespace nomely {

// Background jobs on a fixed number of threads, each started when a job first needs it. Jobs of
// higher priority start first; within one priority, in the order of submission. Destruction asks
// every job to stop, drops those that have not begun, and waits for the rest. Whoever wants to stop
// one job alone gives it the token of a stop source. Safe on any thread.
class JobPool {
 public:
  enum class Priority { userInitiated, utility };
  using Job = std::function<void(std::stop_token)>;

  // `threads` 0: one per core.
  explicit JobPool(std::size_t threads = 0);
  ~JobPool();
  JobPool(const JobPool&) = delete;
  JobPool& operator=(const JobPool&) = delete;

  // The token says that the pool is ending. An exception that escapes the job is logged.
  void submit(Job job, Priority priority = Priority::userInitiated);

  // Runs body(0)...body(count - 1) on the pool's threads and the caller's, and returns when all
  // have ended. Rethrows the first exception, after which the rest is not begun.
  void parallelFor(std::size_t count, const std::function<void(std::size_t)>& body);

 private:
  void work(std::stop_token stopping);
  void runLogged(const Job& job) const;

  std::mutex mutex_;
  std::condition_variable_any available_;
  std::array<std::deque<Job>, 2> waiting_;  // by priority
  bool closing_ = false;
  std::stop_source ending_;
  std::size_t limit_;
  std::vector<std::jthread> threads_;
};

}  // namespace nomely
