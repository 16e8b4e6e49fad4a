#pragma once

#include <functional>
#include <optional>
#include <stop_token>
#include <utility>

#include "Editor/Outcome.h"
#include "Platform/Concurrency/Lifetime.h"
#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/Concurrency/SerialQueue.h"

namespace nomely {

// Questions to a model, one at a time on a thread of their own: they wait for minutes, and a pool's
// threads are few. Destruction stops what is under way. All calls come from the main executor.
class AIJobs {
 public:
  // `executor` must outlive it.
  explicit AIJobs(MainExecutor& executor) : executor_(executor) {}
  ~AIJobs() {
    lifetime_.end();
    ending_.request_stop();
    queue_.reset();
  }
  AIJobs(const AIJobs&) = delete;
  AIJobs& operator=(const AIJobs&) = delete;

  // Runs `work` with a token, and `then` on the main executor with what came of it. Requesting a
  // stop of what is returned stops that token.
  template <typename Work, typename Then>
  std::stop_source run(Work work, Then then) {
    std::stop_source stop;
    queue_->async([this, stop, work = std::move(work), then = lifetime_.guard(std::move(then))] {
      const std::stop_callback ends(ending_.get_token(),
                                    [other = stop]() mutable { other.request_stop(); });
      executor_.post([then, outcome = outcomeOf([&] { return work(stop.get_token()); })]() mutable {
        then(std::move(outcome));
      });
    });
    return stop;
  }

 private:
  MainExecutor& executor_;
  Lifetime lifetime_;
  std::stop_source ending_;
  std::optional<SerialQueue> queue_{std::in_place, "com.nomely.ai.jobs"};
};

}  // namespace nomely
