#pragma once

#include <functional>
#include <optional>
#include <stop_token>
#include <utility>

#include "Platform/Concurrency/JobGroup.h"
#include "Platform/Concurrency/Lifetime.h"
#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/Concurrency/SerialQueue.h"

namespace nomely {

// The work that the timeline's model has done away from the main executor. What comes back runs
// there, and no longer at all after `end`. All calls come from the main executor.
class EditorJobs {
 public:
  // Both must outlive this.
  EditorJobs(MainExecutor& executor, JobPool& pool) : executor_(executor), group_(pool) {}
  ~EditorJobs() { end(); }

  // Waits for writes under way, drops what has not begun of the rest.
  void end() {
    lifetime_.end();
    saveQueue_.reset();
    group_.reset();
  }

  // Runs `work` after every write that was begun before, so that the order of a user's changes is
  // that of the files, and `then` with what it returned.
  template <typename Work, typename Then>
  void write(Work work, Then then) {
    saveQueue_->async(
        [this, work = std::move(work), then = lifetime_.guard(std::move(then))]() mutable {
          executor_.post([then, result = work()]() mutable { then(std::move(result)); });
        });
  }

  // Runs `find` on a background job, beside the writes but not before the end of those begun
  // before this call, and `then` with what it found. Nothing happens once `stop` is requested;
  // `find` gets its token.
  template <typename Find, typename Then>
  void read(const std::stop_source& stop, Find find, Then then) {
    saveQueue_->async([this, stop, find = std::move(find),
                       then = lifetime_.guard([stop, then = std::move(then)](auto&& found) {
                         if (!stop.stop_requested()) then(std::forward<decltype(found)>(found));
                       })] {
      group_->submit([this, stop, find, then](const std::stop_token& ending) {
        const std::stop_callback ends(ending, [stop]() mutable { stop.request_stop(); });
        if (stop.stop_requested()) return;
        executor_.post(
            [then, found = find(stop.get_token())]() mutable { then(std::move(found)); });
      });
    });
  }

 private:
  MainExecutor& executor_;
  Lifetime lifetime_;
  std::optional<JobGroup> group_;  // the queue's jobs submit to it
  std::optional<SerialQueue> saveQueue_{std::in_place, "com.nomely.save"};
};

}  // namespace nomely
