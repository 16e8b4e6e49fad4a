#include "Core/Lifecycle/StartupCoordinator.h"

#include <chrono>
#include <utility>

#include "Platform/System/Log.h"

namespace nomely {

struct StartupCoordinator::Task {
  std::vector<Job> jobs;
  std::size_t next = 0;
  std::stop_source stop;
  std::chrono::steady_clock::time_point began;
  std::vector<std::function<void()>> onEnd;
};

StartupCoordinator::~StartupCoordinator() {
  cancel();
}

void StartupCoordinator::start(bool ready, std::vector<Job> jobs) {
  if (!ready || state_ != State::waitingForContent) return;
  state_ = State::running;
  task_ = std::make_shared<Task>();
  task_->jobs = std::move(jobs);
  executor_.post(lifetime_.guard([this, task = task_] { runNext(task); }));
}

void StartupCoordinator::cancel() {
  if (task_) task_->stop.request_stop();
}

void StartupCoordinator::runNext(const std::shared_ptr<Task>& task) {
  if (task->stop.stop_requested()) return end(task);
  if (task->next == task->jobs.size()) {
    state_ = State::completed;
    return end(task);
  }
  task->began = std::chrono::steady_clock::now();
  // The job may outlive the coordinator; its answer comes back through the executor.
  const auto ended =
      lifetime_.guard([this, task](const std::exception_ptr& failure) { jobEnded(task, failure); });
  const Completion completion = [ended, &executor = executor_](std::exception_ptr failure) {
    executor.post([ended, failure = std::move(failure)] { ended(failure); });
  };
  try {
    task->jobs[task->next].operation(task->stop.get_token(), completion);
  } catch (...) {
    completion(std::current_exception());
  }
}

void StartupCoordinator::jobEnded(const std::shared_ptr<Task>& task,
                                  const std::exception_ptr& failure) {
  const std::string& name = task->jobs[task->next++].name;
  try {
    if (failure) std::rethrow_exception(failure);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - task->began;
    Log::information(LogChannel::app, "启动任务 {}：{:f} ms", name, seconds.count() * 1000.0);
  } catch (const CancellationError&) {
    state_ = State::cancelled;
    return end(task);
  } catch (const std::exception& error) {
    Log::error(LogChannel::app, "启动任务 {} 失败：{}", name, error.what());
  } catch (...) {
    Log::error(LogChannel::app, "启动任务 {} 失败：{}", name, "未知错误");
  }
  runNext(task);
}

void StartupCoordinator::end(const std::shared_ptr<Task>& task) {
  task_ = nullptr;
  for (const auto& call : std::exchange(task->onEnd, {})) call();
}

void StartupCoordinator::resetAfterCancellation(std::function<void(bool)> done) {
  if (state_ != State::cancelled) return done(false);
  auto reset = [this, done = std::move(done)] {
    const bool wasCancelled = state_ == State::cancelled;
    if (wasCancelled) state_ = State::waitingForContent;
    done(wasCancelled);
  };
  if (task_)
    task_->onEnd.push_back(std::move(reset));
  else
    reset();
}

}  // namespace nomely
