#include "Platform/Concurrency/RunLoop.h"

#include <exception>

#include "Platform/System/Log.h"

namespace nomely {

void RunLoop::post(std::function<void()> job) {
  {
    const std::lock_guard lock(mutex_);
    jobs_.push_back(std::move(job));
  }
  posted_.notify_all();
}

bool RunLoop::isCurrent() const {
  const std::lock_guard lock(mutex_);
  return thread_ == std::this_thread::get_id();
}

void RunLoop::stop() {
  post([this] { stopping_ = true; });
}

void RunLoop::run() {
  std::unique_lock lock(mutex_);
  thread_ = std::this_thread::get_id();
  stopping_ = false;
  while (!stopping_) {
    posted_.wait(lock, [&] { return !jobs_.empty(); });
    const std::function<void()> job = std::move(jobs_.front());
    jobs_.pop_front();
    lock.unlock();
    runLogged(job);
    lock.lock();
  }
}

bool RunLoop::runUntil(const std::function<bool()>& done, std::chrono::milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  std::unique_lock lock(mutex_);
  thread_ = std::this_thread::get_id();
  for (bool late = false;;) {
    lock.unlock();
    if (done()) return true;
    // Jobs that post jobs never leave the queue empty.
    if (late) return false;
    lock.lock();
    if (!posted_.wait_until(lock, deadline, [&] { return !jobs_.empty(); })) return false;
    const std::function<void()> job = std::move(jobs_.front());
    jobs_.pop_front();
    lock.unlock();
    runLogged(job);
    late = std::chrono::steady_clock::now() >= deadline;
    lock.lock();
  }
}

void RunLoop::runLogged(const std::function<void()>& job) {
  try {
    job();
  } catch (const std::exception& error) {
    Log::error(LogChannel::app, "⚠️ RunLoop.run: {}", error.what());
  } catch (...) {
    Log::error(LogChannel::app, "⚠️ RunLoop.run: unknown exception");
  }
}

}  // namespace nomely
