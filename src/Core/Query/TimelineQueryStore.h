#pragma once

#include <functional>
#include <stop_token>
#include <string_view>
#include <utility>
#include <vector>

#include "Core/Query/MemoEntry.h"
#include "Core/Query/MemoFilter.h"
#include "Core/Query/SearchIndex.h"
#include "Core/Storage/DayStore.h"

namespace nomely {

// A copy of a memo, with the day on which it stands.
struct TimelineEntry {
  Day date;
  Memo memo;

  friend bool operator==(const TimelineEntry&, const TimelineEntry&) = default;
};

// The lists of memos that the timeline shows, newest first. A memo with neither text nor
// attachments is in none of them. With an index the lists come from memory and are as current as
// the index is; without one they are read from the day folders. Queries never fail: a day that
// can't be listed counts as empty. Stateless; any thread.
class TimelineQueryStore {
 public:
  using Entries = std::vector<MemoEntry>;

  explicit TimelineQueryStore(const DayStore& dayStore, SearchIndex* searchIndex = nullptr)
      : dayStore_(dayStore), searchIndex_(searchIndex) {}

  // A store whose queries end early when `stop` is requested, with what they have found so far.
  [[nodiscard]] TimelineQueryStore until(std::stop_token stop) const {
    TimelineQueryStore copy = *this;
    copy.stop_ = std::move(stop);
    return copy;
  }

  // The main timeline: imported and generated collections stay out.
  [[nodiscard]] Entries visibleEntries() const;
  // Calls `visit` with each of these memos, as soon as its day is read, until it returns false.
  void forEachVisibleEntry(const std::function<bool(const MemoEntry&)>& visit) const;

  // Memos with that tag or one below it.
  [[nodiscard]] Entries entriesWithTag(std::string_view tag) const;
  // Memos without any tag, hidden tags included: a memo with "_x" alone is not listed.
  [[nodiscard]] Entries entriesWithoutTags() const;
  [[nodiscard]] Entries entriesWithImages() const;
  // Memos with "http://" or "https://" in the body, in lower case.
  [[nodiscard]] Entries entriesWithLinks() const;
  // Memos with audio files, sorted by the total size of these, largest first; a missing file counts
  // as 0 bytes.
  [[nodiscard]] Entries entriesWithAudioSortedBySize() const;
  // Memos with files that are neither pictures nor sound.
  [[nodiscard]] Entries entriesWithAttachments() const;
  [[nodiscard]] Entries pinnedEntries() const;
  // Memos of the same month and day in earlier years.
  [[nodiscard]] Entries onThisDayEntries(Day referenceDate) const;

  // The day's memos, highest number first.
  [[nodiscard]] std::vector<Memo> visibleMemos(Day day) const;

 private:
  [[nodiscard]] Entries select(const MemoFilter& filter) const;
  void forEach(const MemoFilter& filter, const std::function<bool(const MemoEntry&)>& visit) const;

  const DayStore& dayStore_;
  SearchIndex* searchIndex_;
  std::stop_token stop_;
};

}  // namespace nomely
