#include "Browser/MonthMemos.h"

#include <algorithm>

#include "Platform/Cancellation.h"

namespace nomely {
namespace {

// Visits the days of the month that have a folder.
template <typename Visit>
void forEachFolder(std::chrono::year_month month, const DayStore& store,
                   const std::stop_token& stop, Visit visit) {
  for (Day day{month / 1}; day.civil().month() == month.month(); day = day.plusDays(1)) {
    throwIfStopped(stop);
    if (store.context().files.isDirectory(store.paths().dayFolder(day))) visit(day);
  }
}

}  // namespace

std::vector<MemoEntry> memosOfMonth(std::chrono::year_month month, const DayStore& store,
                                    const std::stop_token& stop) {
  std::vector<MemoEntry> entries;
  forEachFolder(month, store, stop, [&](Day day) {
    for (Memo& memo : store.listMemos(day))
      entries.push_back({day, std::make_shared<const Memo>(std::move(memo))});
  });
  std::ranges::sort(entries, orderedBefore);
  return entries;
}

std::vector<MemoEntry> memosOfMonth(std::chrono::year_month month, SearchIndex& index) {
  const Day first{month / 1};
  const Day last{month / std::chrono::last};
  std::vector<MemoEntry> entries;
  index.forEachEntry([&](const MemoEntry& entry) {
    if (entry.date >= first && entry.date <= last) entries.push_back(entry);
    return entry.date >= first;
  });
  return entries;
}

std::map<unsigned, std::size_t> memoCountsOfMonth(std::chrono::year_month month,
                                                  const DayStore& store,
                                                  const std::stop_token& stop) {
  std::map<unsigned, std::size_t> counts;
  forEachFolder(month, store, stop, [&](Day day) {
    try {
      const std::size_t count = store.listNumbers(day).size();
      if (count > 0) counts[static_cast<unsigned>(day.civil().day())] = count;
    } catch (const CancellationError&) {
      throw;
    } catch (const Error&) {
      // The timeline shows it as empty, too.
    }
  });
  return counts;
}

}  // namespace nomely
