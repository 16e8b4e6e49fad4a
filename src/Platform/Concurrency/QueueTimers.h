#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

#include "Platform/Concurrency/Lifetime.h"
#include "Platform/Concurrency/SerialQueue.h"
#include "Platform/Concurrency/Timers.h"

namespace nomely {

// Calls that come later, on a queue, to an object that may be gone by then: once this is destroyed,
// which any thread may do, no call begins, and the queue may go too. Safe on any thread.
class QueueTimers {
 public:
  QueueTimers(Timers& timers, SerialQueue& queue)
      : timers_(timers), target_(std::make_shared<Target>()) {
    target_->queue = &queue;
  }
  ~QueueTimers() {
    SerialQueue& queue = *target_->queue;
    if (queue.isCurrent())
      lifetime_.end();
    else
      queue.sync([this] { lifetime_.end(); });
    const std::lock_guard lock(target_->mutex);
    target_->queue = nullptr;
  }
  QueueTimers(const QueueTimers&) = delete;
  QueueTimers& operator=(const QueueTimers&) = delete;

  [[nodiscard]] Timers::Timer after(std::chrono::milliseconds delay,
                                    std::function<void()> call) const {
    return timers_.after(delay, [target = target_, guarded = lifetime_.guard(std::move(call))] {
      const std::lock_guard lock(target->mutex);
      if (target->queue != nullptr) target->queue->async(guarded);
    });
  }

 private:
  // What a call that the timers have begun still finds.
  struct Target {
    std::mutex mutex;
    SerialQueue* queue = nullptr;
  };

  Timers& timers_;
  std::shared_ptr<Target> target_;
  Lifetime lifetime_;
};

}  // namespace nomely
