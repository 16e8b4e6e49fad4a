#pragma once

#include <cstddef>
#include <vector>

#include "Core/Storage/DayStore.h"
#include "Platform/Concurrency/JobPool.h"
#include "Platform/Concurrency/Lifetime.h"
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

  [[nodiscard]] Observable<std::vector<Day>>& dates() { return dates_; }

  // Lists the days on a background job and assigns them to `dates` on the main executor. A refresh
  // that finishes after a later one has its result dropped. When the root can't be listed, `dates`
  // stays as it is.
  void refresh();

 private:
  DayStore dayStore_;
  JobPool& jobs_;
  MainExecutor& executor_;
  Observable<std::vector<Day>> dates_;
  std::size_t begun_ = 0;  // refreshes so far
  std::size_t shown_ = 0;  // the newest refresh whose days are shown
  Lifetime lifetime_;
};

}  // namespace nomely
