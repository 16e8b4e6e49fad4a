#include "Editor/Timeline/TimelineLoading.h"

#include <algorithm>

#include "Core/Extensions/AttachmentKinds.h"
#include "Platform/Concurrency/NotificationCenter.h"
#include "Platform/Error.h"

namespace nomely {
namespace {

bool hasAudio(const Memo& memo) {
  return std::ranges::any_of(memo.attachments, AttachmentKinds::isAudio);
}

}  // namespace

TimelineLoading::TimelineLoading(const DayStore& dayStore, SearchIndex* searchIndex,
                                 TimelineListModel& list, EditorJobs& jobs)
    : dayStore_(dayStore),
      searchIndex_(searchIndex),
      store_(dayStore, searchIndex),
      list_(list),
      jobs_(jobs) {}

void TimelineLoading::begin(Load load) {
  ++loadNumber_;
  for (const Step step : load.head) perform(step, load);
  // A load that was cancelled changes nothing: this one says when loading ends.
  cancel();
  task_ = std::stop_source();
  run(task_, load.query);
}

void TimelineLoading::perform(Step step, Load& load) {
  switch (step) {
    case Step::stopPlayback:
      return (void)NotificationCenter::shared().post(Notifications::stopAudioPlayback);
    case Step::clearSearch:
      return clearSearchContext();
    case Step::mode:
      return list_.setMode(load.mode);
    case Step::tag:
      return currentFilterTag.set(load.tag);
    case Step::date:
      return list_.selectDate(*load.date);
    case Step::firstPage:
      return list_.showFirstPage();
    case Step::loading:
      return setLoading(true);
    case Step::filter:
      filteredQuery_ = load.filter;
      return list_.setMembership(load.membership);
    case Step::search:
      activeSearchQuery.set(std::move(load.search.query));
      searchResultCount.set(load.search.count);
      return searchSnippets.set(std::move(load.search.snippets));
    case Step::empty:
      return list_.show({});  // the old list would be taken for the answer
  }
}

void TimelineLoading::run(const std::stop_source& task, const Query& query) {
  jobs_.read(task, query,
             [this, task, query, generation = list_.generation()](const Arrival& arrival) {
               // A memo that was changed while the query ran would get its old text back.
               if (generation != list_.generation()) return run(task, query);
               arrival();
             });
}

template <typename Find>
TimelineLoading::Query TimelineLoading::shows(TimelineMode mode, Find find) {
  return [this, mode, find = std::move(find)](const std::stop_token& stop) -> Arrival {
    return [this, mode, found = find(store_.until(stop))]() mutable {
      if (list_.timelineMode.get() != mode) return;
      list_.show(std::move(found));
      setLoading(false);
    };
  };
}

void TimelineLoading::clearSearchContext() {
  filteredQuery_ = nullptr;
  activeSearchQuery.set(std::nullopt);
  searchResultCount.set(0);
  searchSnippets.set({});
}

void TimelineLoading::setLoading(bool loading) {
  const bool ended = isLoadingTimeline.get() && !loading;
  isLoadingTimeline.set(loading);
  if (ended) hasLoadedInitialTimeline.setIfChanged(true);
}

void TimelineLoading::loadDay(Day date) {
  begin({.head = ofDay,
         .query = [this, date](const std::stop_token&) -> Arrival {
           return [this, date, found = store_.visibleMemos(date)]() mutable {
             if (list_.timelineMode.get() != TimelineMode::day || list_.selectedDate.get() != date)
               return;
             list_.showDay(std::move(found));
             setLoading(false);
           };
         },
         .date = date});
}

TimelineLoading::Query TimelineLoading::newestFirst(Query whole) {
  return [this, whole = std::move(whole)](const std::stop_token& stop) -> Arrival {
    Entries newest;
    TimelineQueryStore(dayStore_).until(stop).forEachVisibleEntry([&](const MemoEntry& entry) {
      newest.push_back(entry);
      return newest.size() < TimelineListModel::displayStep;
    });
    return [this, whole, newest = std::move(newest)]() mutable {
      if (list_.timelineMode.get() != TimelineMode::all) return;
      list_.show(std::move(newest));
      run(task_, whole);
    };
  };
}

void TimelineLoading::loadAllMemos() {
  Query query = shows(TimelineMode::all,
                      [](const TimelineQueryStore& store) { return store.visibleEntries(); });
  const bool wouldWait = searchIndex_ && !searchIndex_->isBuilt() && list_.allMemos.get().empty();
  begin({.head = ofAll,
         .query = wouldWait ? newestFirst(std::move(query)) : std::move(query),
         .mode = TimelineMode::all});
}

void TimelineLoading::loadMemosWithTag(std::string tag) {
  begin(
      {.head = ofTag,
       .query = shows(TimelineMode::filtered,
                      [tag](const TimelineQueryStore& store) { return store.entriesWithTag(tag); }),
       .mode = TimelineMode::filtered,
       .tag = tag});
}

void TimelineLoading::loadSearchResults(const std::vector<SearchResult>& results,
                                        std::string query) {
  Search search{.query = std::move(query), .count = results.size()};
  std::vector<std::pair<Day, std::int64_t>> places;
  places.reserve(results.size());
  for (const SearchResult& result : results) {
    search.snippets.emplace(memoKey(result.date, result.seqNumber), result.snippet);
    places.emplace_back(result.date, result.seqNumber);
  }
  begin({.head = ofResults,
         .query = [this, places = std::move(places)](const std::stop_token& stop) -> Arrival {
           Entries found;
           found.reserve(places.size());
           for (const auto& [date, number] : places) {
             if (stop.stop_requested()) break;
             try {
               if (std::optional<Memo> memo = dayStore_.memoStore().read(date, number))
                 found.push_back({date, std::make_shared<const Memo>(*std::move(memo))});
             } catch (const Error&) {
               // Gone or damaged since the search: there is nothing to show for it.
             }
           }
           return [this, found = std::move(found)]() mutable {
             list_.show(std::move(found));
             setLoading(false);
           };
         },
         .mode = TimelineMode::filtered,
         .search = std::move(search)});
}

void TimelineLoading::reloadSearch(const std::string& query) {
  if (!searchIndex_) return;
  constexpr std::size_t limit = 50;
  begin({.head = ofSearch, .query = [this, query](const std::stop_token&) -> Arrival {
           return [this, query, results = searchIndex_->search(query, limit)] {
             loadSearchResults(results, query);
           };
         }});
}

void TimelineLoading::loadFiltered(TimelineMode mode, TimelineListModel::Membership membership,
                                   const Filter& filter) {
  begin({.head = ofFilter,
         .query = shows(mode, filter),
         .mode = mode,
         .membership = std::move(membership),
         .filter = filter});
}

void TimelineLoading::loadMemosNoTag() {
  loadFiltered(TimelineMode::filtered, nullptr, &TimelineQueryStore::entriesWithoutTags);
}

void TimelineLoading::loadMemosWithImages() {
  loadFiltered(TimelineMode::filtered, nullptr, &TimelineQueryStore::entriesWithImages);
}

void TimelineLoading::loadMemosWithLinks() {
  loadFiltered(TimelineMode::filtered, nullptr, &TimelineQueryStore::entriesWithLinks);
}

void TimelineLoading::loadMemosWithAttachments() {
  loadFiltered(TimelineMode::filtered, nullptr, &TimelineQueryStore::entriesWithAttachments);
}

void TimelineLoading::loadMemosWithAudio() {
  loadFiltered(TimelineMode::filtered, hasAudio, &TimelineQueryStore::entriesWithAudioSortedBySize);
}

void TimelineLoading::loadPinnedMemos() {
  loadFiltered(TimelineMode::pinned, nullptr, &TimelineQueryStore::pinnedEntries);
}

void TimelineLoading::loadOnThisDay() {
  loadFiltered(TimelineMode::filtered, nullptr, [this](const TimelineQueryStore& store) {
    return store.onThisDayEntries(dayStore_.context().clock.today());
  });
}

void TimelineLoading::refreshOnThisDayFlag() {
  jobs_.read(
      std::stop_source(),
      [this](const std::stop_token& stop) {
        const Day today = dayStore_.context().clock.today();
        return !store_.until(stop).onThisDayEntries(today).empty();
      },
      [this](bool any) { hasOnThisDay.set(any); });
}

void TimelineLoading::refreshCurrentTimeline(Cause cause) {
  switch (list_.timelineMode.get()) {
    case TimelineMode::day:
      return loadDay(list_.selectedDate.get());
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
    loadFiltered(TimelineMode::filtered, list_.membership(), filteredQuery_);
}

}  // namespace nomely
