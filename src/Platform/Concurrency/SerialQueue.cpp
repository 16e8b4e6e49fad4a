#include "Platform/Concurrency/SerialQueue.h"

#include <exception>

#include "Platform/System/Log.h"

namespace nomely {

thread_local SerialQueue::Turn* SerialQueue::innermost_ = nullptr;

SerialQueue::Turn::Turn(SerialQueue& queue) : Turn(queue, queue.takeTicket()) {}

SerialQueue::Turn::Turn(SerialQueue& queue, std::uint64_t ticket)
    : queue_(queue), outer_(innermost_) {
  std::unique_lock lock(queue_.mutex_);
  queue_.changed_.wait(lock, [&] { return queue_.serving_ == ticket; });
  innermost_ = this;
}

SerialQueue::Turn::~Turn() {
  innermost_ = outer_;
  const std::lock_guard lock(queue_.mutex_);
  ++queue_.serving_;
  queue_.changed_.notify_all();
}

SerialQueue::~SerialQueue() {
  {
    const std::lock_guard lock(mutex_);
    closing_ = true;
  }
  changed_.notify_all();
  if (worker_.joinable()) worker_.join();
}

void SerialQueue::async(std::function<void()> job) {
  {
    const std::lock_guard lock(mutex_);
    jobs_.push_back({nextTicket_++, std::move(job)});
    if (!worker_.joinable()) worker_ = std::thread([this] { work(); });
  }
  changed_.notify_all();
}

std::uint64_t SerialQueue::takeTicket() {
  const std::lock_guard lock(mutex_);
  return nextTicket_++;
}

bool SerialQueue::isCurrent() const {
  for (const Turn* turn = innermost_; turn != nullptr; turn = turn->outer_)
    if (&turn->queue_ == this) return true;
  return false;
}

void SerialQueue::work() {
  for (;;) {
    Job job;
    {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [&] { return closing_ || !jobs_.empty(); });
      if (jobs_.empty()) return;
      job = std::move(jobs_.front());
      jobs_.pop_front();
    }
    const Turn turn(*this, job.ticket);
    try {
      job.run();
    } catch (const std::exception& error) {
      Log::error(LogChannel::app, "⚠️ SerialQueue.async({}): {}", label_, error.what());
    } catch (...) {
      Log::error(LogChannel::app, "⚠️ SerialQueue.async({}): unknown exception", label_);
    }
    job.run = nullptr;  // what it captured goes before the next job's turn
  }
}

}  // namespace nomely
