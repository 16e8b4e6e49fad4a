#include "Browser/MonthOverviewStore.h"

#include <algorithm>
#include <functional>
#include <tuple>

#include "Core/Extensions/AttachmentKinds.h"
#include "Core/Extensions/TagNames.h"
#include "Core/Extensions/TextStats.h"

namespace nomely::MonthOverviewStore {
namespace {

using Memos = std::vector<const MemoEntry*>;
using MemosByTag = std::map<std::string, Memos, std::less<>>;

unsigned dayOf(const MemoEntry& entry) {
  return static_cast<unsigned>(entry.date.civil().day());
}

bool isIn(const MemoEntry& entry, int year, unsigned month) {
  const auto civil = entry.date.civil();
  return static_cast<int>(civil.year()) == year && static_cast<unsigned>(civil.month()) == month;
}

void count(const MemoEntry& entry, MonthOverview& overview) {
  const Memo& memo = *entry.memo;
  ++overview.dailyCounts[dayOf(entry)];
  overview.totalWords += TextStats::meaningfulCount(memo.body);
  overview.totalAttachments += memo.attachments.size();
  overview.audioAttachments +=
      static_cast<std::size_t>(std::ranges::count_if(memo.attachments, AttachmentKinds::isAudio));
}

MemosByTag memosByTag(const std::vector<MemoEntry>& entries) {
  MemosByTag tags;
  for (const MemoEntry& entry : entries)
    for (const std::string& tag : entry.memo->tags) {
      if (TagNames::isHidden(tag)) continue;
      Memos& memos = tags[tag];
      if (memos.empty() || memos.back() != &entry) memos.push_back(&entry);
    }
  return tags;
}

// Drops 工作 when each of its memos has 工作/会议 or another child as well: the children tell the
// same story in more detail.
void dropCoveredParents(MemosByTag& tags) {
  std::map<std::string_view, std::set<const MemoEntry*>> covered;
  for (const auto& [tag, memos] : tags) {
    const std::string_view parent = std::string_view(tag).substr(0, tag.find('/'));
    if (parent.size() < tag.size() && tags.contains(parent))
      covered[parent].insert(memos.begin(), memos.end());
  }
  std::vector<std::string> dropped;
  for (const auto& [parent, children] : covered)
    if (std::ranges::all_of(tags.find(parent)->second,
                            [&](const MemoEntry* memo) { return children.contains(memo); }))
      dropped.emplace_back(parent);
  for (const std::string& parent : dropped) tags.erase(parent);
}

TagThread threadOf(const std::string& tag, const Memos& memos) {
  TagThread thread;
  thread.tag = tag;
  thread.displayName = tag.substr(tag.rfind('/') + 1);
  thread.entries.reserve(memos.size());
  for (const MemoEntry* entry : memos) {
    thread.days.insert(dayOf(*entry));
    thread.entries.push_back({.id = memoKey(entry->date, entry->memo->seqNumber),
                              .date = entry->date,
                              .day = dayOf(*entry),
                              .time = entry->memo->time,
                              .seqNumber = entry->memo->seqNumber,
                              .preview = previewLine(entry->memo->body)});
  }
  thread.firstDay = *thread.days.begin();
  thread.lastDay = *thread.days.rbegin();
  thread.count = memos.size();
  std::ranges::stable_sort(thread.entries, {}, &ThreadEntry::day);
  return thread;
}

bool isOnSeveralDays(const Memos& memos) {
  return std::ranges::any_of(
      memos, [&](const MemoEntry* entry) { return entry->date != memos.front()->date; });
}

std::vector<TagThread> threadsOf(const std::vector<MemoEntry>& entries) {
  MemosByTag tags = memosByTag(entries);
  dropCoveredParents(tags);
  std::vector<TagThread> threads;
  for (const auto& [tag, memos] : tags)
    if (isOnSeveralDays(memos)) threads.push_back(threadOf(tag, memos));
  // By tag they are sorted already.
  std::ranges::stable_sort(threads, std::greater(), [](const TagThread& thread) {
    return std::tuple(thread.days.size(), thread.count);
  });
  return threads;
}

}  // namespace

MonthOverview compute(int year, unsigned month, std::span<const MemoEntry> entries) {
  MonthOverview overview;
  overview.year = year;
  overview.month = month;
  std::vector<MemoEntry> ofMonth;
  for (const MemoEntry& entry : entries)
    if (isIn(entry, year, month)) ofMonth.push_back(entry);
  for (const MemoEntry& entry : ofMonth) count(entry, overview);
  overview.totalMemos = ofMonth.size();
  overview.totalDays = overview.dailyCounts.size();
  overview.threads = threadsOf(ofMonth);
  overview.anomalies = detectAnomalies(ofMonth);
  return overview;
}

}  // namespace nomely::MonthOverviewStore
