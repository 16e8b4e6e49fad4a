#include <algorithm>
#include <array>

#include "Core/Extensions/AttachmentKinds.h"
#include "Editor/DayViewModel.h"
#include "Platform/Concurrency/NotificationCenter.h"

namespace nomely {
namespace {

// Locked memos stand above pinned ones, and those above the rest.
std::size_t rankOf(const Memo& memo) {
  return (memo.lockedOnTop ? 0U : 2U) + (memo.pinned ? 0U : 1U);
}

void stopPlayback() {
  NotificationCenter::shared().post(Notifications::stopAudioPlayback);
}

bool hasAudio(const Memo& memo) {
  return std::ranges::any_of(memo.attachments, AttachmentKinds::isAudio);
}

}  // namespace

// Runs `find` on a background job behind the writes that are on their way, so that it sees the
// files as they leave them, and `apply` with what it found on the main executor. A load that was
// cancelled changes nothing: the one that took its place says when loading ends.
template <typename Find, typename Apply>
void DayViewModel::startLoad(Find find, Apply apply) {
  const std::stop_source task;
  allMemosLoadTask_ = task;
  saveQueue_.async([this, task, find = std::move(find), apply = std::move(apply)] {
    jobs_.submit([this, task, find, apply](const std::stop_token&) {
      if (task.stop_requested()) return;
      onMain([task, apply, found = find()]() mutable {
        if (!task.stop_requested()) apply(std::move(found));
      });
    });
  });
}

void DayViewModel::cancelLoad() {
  if (allMemosLoadTask_) allMemosLoadTask_->request_stop();
  allMemosLoadTask_.reset();
}

void DayViewModel::clearSearchContext() {
  filteredQuery_ = nullptr;
  activeSearchQuery.set(std::nullopt);
  searchResultCount.set(0);
  searchSnippets.set({});
}

void DayViewModel::setMode(TimelineMode mode) {
  if (mode != TimelineMode::filtered) filterMembership_ = nullptr;
  timelineMode.set(mode);
}

void DayViewModel::setLoading(bool loading) {
  const bool ended = isLoadingTimeline.get() && !loading;
  isLoadingTimeline.set(loading);
  if (ended) hasLoadedInitialTimeline.setIfChanged(true);
}

// The old list goes at once: it would be taken for the answer.
void DayViewModel::showNothing() {
  allMemos.set({});
  recomputeDisplayMemos();
}

void DayViewModel::showAll(Entries entries) {
  allMemos.set(std::move(entries));
  recomputeDisplayMemos();
  setLoading(false);
}

void DayViewModel::recomputeDisplayMemos() {
  const Entries& all = allMemos.get();
  std::array<std::vector<const MemoEntry*>, 4> ranks;
  for (const MemoEntry& entry : all) ranks[rankOf(*entry.memo)].push_back(&entry);

  const std::size_t count =
      timelineMode.get() == TimelineMode::all ? std::min(displayLimit_, all.size()) : all.size();
  Entries shown;
  shown.reserve(count);
  for (const auto& rank : ranks)
    for (std::size_t i = 0; i < rank.size() && shown.size() < count; ++i) shown.push_back(*rank[i]);
  displayMemos.set(std::move(shown));
}

void DayViewModel::loadDay(Day date) {
  cancelLoad();
  stopPlayback();
  clearSearchContext();
  setMode(TimelineMode::day);
  currentFilterTag.set(std::nullopt);
  selectedDate.set(date);
  setLoading(true);
  startLoad([this, date] { return timelineQueryStore_.visibleMemos(date); },
            [this, date](std::vector<Memo> found) {
              if (timelineMode.get() != TimelineMode::day || selectedDate.get() != date) return;
              Entries entries;
              entries.reserve(found.size());
              for (const Memo& memo : found)
                entries.push_back({date, std::make_shared<const Memo>(memo)});
              memos.set(std::move(found));
              showAll(std::move(entries));
            });
}

void DayViewModel::loadAllMemos() {
  stopPlayback();
  clearSearchContext();
  setMode(TimelineMode::all);
  currentFilterTag.set(std::nullopt);
  displayLimit_ = displayStep;
  cancelLoad();
  setLoading(true);
  startLoad([this] { return timelineQueryStore_.visibleEntries(); },
            [this](Entries found) {
              if (timelineMode.get() == TimelineMode::all) showAll(std::move(found));
            });
}

void DayViewModel::loadMemosWithTag(std::string tag) {
  cancelLoad();
  setLoading(true);
  stopPlayback();
  clearSearchContext();
  setMode(TimelineMode::filtered);
  currentFilterTag.set(tag);
  filterMembership_ = nullptr;
  showNothing();
  startLoad([this, tag = std::move(tag)] { return timelineQueryStore_.entriesWithTag(tag); },
            [this](Entries found) {
              if (timelineMode.get() == TimelineMode::filtered) showAll(std::move(found));
            });
}

void DayViewModel::loadSearchResults(const std::vector<SearchResult>& results, std::string query) {
  cancelLoad();
  setLoading(true);
  stopPlayback();
  clearSearchContext();
  currentFilterTag.set(std::nullopt);
  filterMembership_ = nullptr;
  setMode(TimelineMode::filtered);
  activeSearchQuery.set(std::move(query));
  searchResultCount.set(results.size());
  std::map<std::string, std::string> snippets;
  std::vector<std::pair<Day, std::int64_t>> places;
  places.reserve(results.size());
  for (const SearchResult& result : results) {
    snippets.emplace(memoKey(result.date, result.seqNumber), result.snippet);
    places.emplace_back(result.date, result.seqNumber);
  }
  searchSnippets.set(std::move(snippets));

  startLoad(
      [this, places = std::move(places)] {
        Entries found;
        found.reserve(places.size());
        for (const auto& [date, number] : places) {
          try {
            if (std::optional<Memo> memo = dayStore_.memoStore().read(date, number))
              found.push_back({date, std::make_shared<const Memo>(*std::move(memo))});
          } catch (const Error&) {
            // Gone or damaged since the search: there is nothing to show for it.
          }
        }
        return found;
      },
      [this](Entries found) { showAll(std::move(found)); });
}

void DayViewModel::reloadSearch(const std::string& query) {
  if (!searchIndex_) return;
  constexpr std::size_t limit = 50;
  cancelLoad();
  setLoading(true);
  startLoad([this, query] { return searchIndex_->search(query, limit); },
            [this, query](const std::vector<SearchResult>& results) {
              loadSearchResults(results, query);
            });
}

void DayViewModel::loadTimelineQuery(TimelineMode mode, Membership membership, Query query) {
  cancelLoad();
  stopPlayback();
  clearSearchContext();
  currentFilterTag.set(std::nullopt);
  setMode(mode);
  filterMembership_ = std::move(membership);
  filteredQuery_ = query;
  setLoading(true);
  showNothing();
  startLoad([this, query = std::move(query)] { return query(timelineQueryStore_); },
            [this, mode](Entries found) {
              if (timelineMode.get() == mode) showAll(std::move(found));
            });
}

void DayViewModel::loadMemosNoTag() {
  loadTimelineQuery(TimelineMode::filtered, nullptr, &TimelineQueryStore::entriesWithoutTags);
}

void DayViewModel::loadMemosWithImages() {
  loadTimelineQuery(TimelineMode::filtered, nullptr, &TimelineQueryStore::entriesWithImages);
}

void DayViewModel::loadMemosWithLinks() {
  loadTimelineQuery(TimelineMode::filtered, nullptr, &TimelineQueryStore::entriesWithLinks);
}

void DayViewModel::loadMemosWithAttachments() {
  loadTimelineQuery(TimelineMode::filtered, nullptr, &TimelineQueryStore::entriesWithAttachments);
}

void DayViewModel::loadMemosWithAudio() {
  loadTimelineQuery(TimelineMode::filtered, hasAudio,
                    &TimelineQueryStore::entriesWithAudioSortedBySize);
}

void DayViewModel::loadPinnedMemos() {
  loadTimelineQuery(TimelineMode::pinned, nullptr, &TimelineQueryStore::pinnedEntries);
}

void DayViewModel::loadOnThisDay() {
  loadTimelineQuery(TimelineMode::filtered, nullptr, [this](const TimelineQueryStore& store) {
    return store.onThisDayEntries(dayStore_.context().clock.today());
  });
}

void DayViewModel::refreshOnThisDayFlag() {
  jobs_.submit([this](const std::stop_token&) {
    const Day today = dayStore_.context().clock.today();
    const bool any = !timelineQueryStore_.onThisDayEntries(today).empty();
    onMain([this, any] { hasOnThisDay.set(any); });
  });
}

void DayViewModel::refreshCurrentTimeline(Cause cause) {
  switch (timelineMode.get()) {
    case TimelineMode::day:
      return loadDay(selectedDate.get());
    case TimelineMode::all:
      return loadAllMemos();
    case TimelineMode::pinned:
      return loadPinnedMemos();
    case TimelineMode::filtered:
      break;
  }
  if (cause != Cause::externalWrite) return;
  if (activeSearchQuery.get())
    reloadSearch(*activeSearchQuery.get());
  else if (currentFilterTag.get())
    loadMemosWithTag(*currentFilterTag.get());
  else if (filteredQuery_)
    loadTimelineQuery(TimelineMode::filtered, filterMembership_, filteredQuery_);
}

bool DayViewModel::canLoadMoreDisplayMemos() const {
  return timelineMode.get() == TimelineMode::all &&
         displayMemos.get().size() < allMemos.get().size();
}

void DayViewModel::loadMoreDisplayMemos() {
  if (!canLoadMoreDisplayMemos()) return;
  displayLimit_ += displayStep;
  recomputeDisplayMemos();
}

void DayViewModel::loadAllDisplayMemos() {
  if (!canLoadMoreDisplayMemos()) return;
  displayLimit_ = allMemos.get().size();
  recomputeDisplayMemos();
}

std::optional<std::string> DayViewModel::searchSnippet(Day date, std::int64_t seqNumber) const {
  const auto& snippets = searchSnippets.get();
  const auto found = snippets.find(memoKey(date, seqNumber));
  return found == snippets.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace nomely
