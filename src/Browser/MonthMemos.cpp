#include "Browser/MonthMemos.h"

#include <algorithm>

#include "Platform/Cancellation.h"

namespace nomely {

std::vector<MemoEntry> memosOfMonth(std::chrono::year_month month, const DayStore& store,
                                    const std::stop_token& stop) {
  std::vector<MemoEntry> entries;
  for (Day day{month / 1}; day.civil().month() == month.month(); day = day.plusDays(1)) {
    throwIfStopped(stop);
    if (!store.context().files.isDirectory(store.paths().dayFolder(day))) continue;
    for (Memo& memo : store.listMemos(day))
      entries.push_back({day, std::make_shared<const Memo>(std::move(memo))});
  }
  std::ranges::sort(entries, orderedBefore);
  return entries;
}

}  // namespace nomely
