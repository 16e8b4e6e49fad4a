#pragma once

#include <functional>
#include <vector>

#include "Core/Storage/DayStore.h"

namespace nomely {

// A memo with the day on which it stands.
struct TimelineEntry {
  Day date;
  Memo memo;

  friend bool operator==(const TimelineEntry&, const TimelineEntry&) = default;
};

// The lists of memos that the timeline shows. A memo with neither text nor attachments is in none
// of them. Queries never fail: a day that can't be listed counts as empty. Stateless; any thread.
class TimelineQueryStore {
 public:
  explicit TimelineQueryStore(const DayStore& dayStore) : dayStore_(dayStore) {}

  // What lies in the main timeline, newest first: imported and generated collections stay out.
  [[nodiscard]] std::vector<TimelineEntry> visibleEntries() const;
  // The same, day after day as each is read, until `visit` returns false.
  void forEachVisibleEntry(const std::function<bool(const TimelineEntry&)>& visit) const;

  // The day's memos, highest number first.
  [[nodiscard]] std::vector<Memo> visibleMemos(Day day) const;

  // Newest first: by day, then by `time` as text, then by number.
  [[nodiscard]] static bool orderedBefore(const TimelineEntry& left, const TimelineEntry& right);

 private:
  const DayStore& dayStore_;
};

}  // namespace nomely
