#include "Core/Query/TimelineQueryStore.h"

#include <algorithm>
#include <ranges>

#include "Core/Query/SizedEntry.h"
#include "Platform/Error.h"

namespace nomely {
std::vector<Memo> TimelineQueryStore::visibleMemos(Day day) const {
  try {
    std::vector<Memo> memos = dayStore_.listMemos(day);
    std::erase_if(memos, [](const Memo& memo) { return !isVisible(memo); });
    return memos;
  } catch (const Error&) {
    return {};
  }
}

void TimelineQueryStore::forEach(const MemoFilter& filter,
                                 const std::function<bool(const MemoEntry&)>& visit) const {
  const auto matches = [&](const MemoEntry& entry) {
    return filter.matches(entry.date, *entry.memo);
  };
  if (searchIndex_ != nullptr) {
    searchIndex_->forEachEntry([&](const MemoEntry& entry) {
      return !stop_.stop_requested() && (!matches(entry) || visit(entry));
    });
    return;
  }
  std::vector<Day> days;
  try {
    days = dayStore_.namedDays();
  } catch (const Error&) {
    return;
  }
  for (const Day day : std::views::reverse(days)) {
    if (stop_.stop_requested()) return;
    if (!filter.mayHold(day)) continue;
    Entries entries;
    for (Memo& memo : visibleMemos(day))
      entries.push_back({day, std::make_shared<const Memo>(std::move(memo))});
    std::erase_if(entries, [&](const MemoEntry& entry) { return !matches(entry); });
    std::ranges::stable_sort(entries, orderedBefore);
    for (const MemoEntry& entry : entries)
      if (!visit(entry)) return;
  }
}

TimelineQueryStore::Entries TimelineQueryStore::select(const MemoFilter& filter) const {
  Entries entries;
  forEach(filter, [&](const MemoEntry& entry) {
    entries.push_back(entry);
    return true;
  });
  return entries;
}

void TimelineQueryStore::forEachVisibleEntry(
    const std::function<bool(const MemoEntry&)>& visit) const {
  forEach({.mainTimeline = true}, visit);
}

TimelineQueryStore::Entries TimelineQueryStore::visibleEntries() const {
  return select({.mainTimeline = true});
}

TimelineQueryStore::Entries TimelineQueryStore::entriesWithTag(std::string_view tag) const {
  return select({.tags = {std::string(tag)}});
}

TimelineQueryStore::Entries TimelineQueryStore::entriesWithoutTags() const {
  return select({.untagged = true});
}

TimelineQueryStore::Entries TimelineQueryStore::entriesWithImages() const {
  return select({.images = true});
}

TimelineQueryStore::Entries TimelineQueryStore::entriesWithLinks() const {
  return select({.links = true});
}

TimelineQueryStore::Entries TimelineQueryStore::entriesWithAudioSortedBySize() const {
  std::vector<SizedEntry> found;
  for (MemoEntry& entry : select({.audio = true})) {
    const std::uint64_t bytes = audioBytes(entry, dayStore_.context());
    found.push_back({bytes, std::move(entry)});
  }
  std::ranges::stable_sort(found, isLarger);
  Entries entries;
  for (SizedEntry& sized : found) entries.push_back(std::move(sized.entry));
  return entries;
}

TimelineQueryStore::Entries TimelineQueryStore::entriesWithAttachments() const {
  return select({.files = true});
}

TimelineQueryStore::Entries TimelineQueryStore::pinnedEntries() const {
  return select({.pinned = true});
}

TimelineQueryStore::Entries TimelineQueryStore::onThisDayEntries(Day referenceDate) const {
  return select({.onThisDay = referenceDate});
}

}  // namespace nomely
