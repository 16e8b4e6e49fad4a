#pragma once

#include <memory>
#include <vector>

#include "Core/Storage/DayStore.h"
#include "Platform/Concurrency/JobPool.h"
#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/Concurrency/Observable.h"
#include "Platform/Time/Day.h"

namespace nomely {

// The days that hold memos, as the last refresh found them: what the calendar shows. Lives on the
// main executor, and may go while a refresh is under way; the executor and the pool must outlive
// that.
class EntryDateIndex {
 public:
  EntryDateIndex(DayStore dayStore, JobPool& jobs, MainExecutor& executor)
      : dayStore_(std::move(dayStore)), jobs_(jobs), executor_(executor) {}

  [[nodiscard]] Observable<std::vector<Day>>& dates() { return *dates_; }

  // Lists the days on a background job and assigns them to `dates` on the main executor. What an
  // earlier refresh found never replaces what a later one did. When the root can't be listed,
  // `dates` stays as it is.
  void refresh();

 private:
  DayStore dayStore_;
  JobPool& jobs_;
  MainExecutor& executor_;
  std::shared_ptr<Observable<std::vector<Day>>> dates_ =
      std::make_shared<Observable<std::vector<Day>>>();
  std::size_t begun_ = 0;  // refreshes so far
  // The newest refresh whose days are shown; touched on the main executor alone.
  std::shared_ptr<std::size_t> shown_ = std::make_shared<std::size_t>(0);
};

}  // namespace nomely
