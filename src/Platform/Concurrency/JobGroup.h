#pragma once

#include <functional>
#include <memory>
#include <stop_token>

#include "Platform/Concurrency/JobPool.h"

namespace nomely {

// The jobs that one object has in a pool, and that may use it: destruction asks them to stop, drops
// those that have not begun, and waits for the rest. Declare it after what its jobs use. Safe on
// any thread; must not be destroyed by one of its own jobs.
class JobGroup {
 public:
  // `pool` must outlive the group.
  explicit JobGroup(JobPool& pool) : pool_(pool) {}
  ~JobGroup();
  JobGroup(const JobGroup&) = delete;
  JobGroup& operator=(const JobGroup&) = delete;

  // The token says that the group, or the pool, is ending. An exception that escapes is logged.
  void submit(std::function<void(std::stop_token)> job,
              JobPool::Priority priority = JobPool::Priority::userInitiated);

 private:
  struct State;

  static std::shared_ptr<State> makeState();

  JobPool& pool_;
  std::shared_ptr<State> state_ = makeState();
};

}  // namespace nomely
