#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <stop_token>
#include <string>
#include <vector>

#include "Platform/Concurrency/Lifetime.h"
#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/Error.h"

namespace nomely {

// What a job reports when it ended because it was asked to.
class CancellationError : public Error {
 public:
  CancellationError() : Error("cancelled", "操作已取消") {}
};

// Runs named jobs one after the other when the main content is ready, once per process. A job that
// fails is logged and the next one runs. Lives on the main executor, and so do all its calls.
class StartupCoordinator {
 public:
  // Called once, on any thread, when a job has ended: null for success.
  using Completion = std::function<void(std::exception_ptr failure)>;

  struct Job {
    std::string name;
    // Starts on the main executor and may go on elsewhere; an exception counts as its failure. One
    // that was asked to stop reports CancellationError.
    std::function<void(std::stop_token, Completion)> operation;
  };

  enum class State { waitingForContent, running, completed, cancelled };

  // `executor` must outlive the coordinator.
  explicit StartupCoordinator(MainExecutor& executor) : executor_(executor) {}
  ~StartupCoordinator();
  StartupCoordinator(const StartupCoordinator&) = delete;
  StartupCoordinator& operator=(const StartupCoordinator&) = delete;

  [[nodiscard]] State state() const { return state_; }
  [[nodiscard]] bool hasTask() const { return task_ != nullptr; }

  // Runs `jobs` in the background when `ready` and the state is waitingForContent; otherwise does
  // nothing, so that it may be called at each change of the condition.
  void start(bool ready, std::vector<Job> jobs);

  // Asks the running job to stop and keeps the later ones from starting.
  void cancel();

  // After a cancellation, waits for the job that still runs and makes another start possible.
  // `done` is called on the main executor with whether it did.
  void resetAfterCancellation(std::function<void(bool)> done);

 private:
  struct Task;

  void runNext(const std::shared_ptr<Task>& task);
  void jobEnded(const std::shared_ptr<Task>& task, const std::exception_ptr& failure);
  void end(const std::shared_ptr<Task>& task);

  MainExecutor& executor_;
  State state_ = State::waitingForContent;
  std::shared_ptr<Task> task_;
  Lifetime lifetime_;
};

}  // namespace nomely
