#include "Core/Query/TimelineQueryStore.h"

#include <algorithm>
#include <ranges>
#include <tuple>

#include "Platform/Error.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

bool isVisible(const Memo& memo) {
  return !memo.attachments.empty() || !trimSpaceAndBreaks(memo.body).empty();
}

}  // namespace

bool TimelineQueryStore::orderedBefore(const TimelineEntry& left, const TimelineEntry& right) {
  return std::tie(left.date, left.memo.time, left.memo.seqNumber) >
         std::tie(right.date, right.memo.time, right.memo.seqNumber);
}

std::vector<Memo> TimelineQueryStore::visibleMemos(Day day) const {
  try {
    std::vector<Memo> memos = dayStore_.listMemos(day);
    std::erase_if(memos, [](const Memo& memo) { return !isVisible(memo); });
    return memos;
  } catch (const Error&) {
    return {};
  }
}

void TimelineQueryStore::forEachVisibleEntry(
    const std::function<bool(const TimelineEntry&)>& visit) const {
  const std::vector<Day> days = dayStore_.listAllDates();
  for (const Day day : std::views::reverse(days)) {
    std::vector<TimelineEntry> entries;
    for (Memo& memo : visibleMemos(day))
      if (!memo.isExcludedFromTimeline()) entries.push_back({day, std::move(memo)});
    std::ranges::stable_sort(entries, orderedBefore);
    for (const TimelineEntry& entry : entries)
      if (!visit(entry)) return;
  }
}

std::vector<TimelineEntry> TimelineQueryStore::visibleEntries() const {
  std::vector<TimelineEntry> entries;
  forEachVisibleEntry([&](const TimelineEntry& entry) {
    entries.push_back(entry);
    return true;
  });
  return entries;
}

}  // namespace nomely
