#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <vector>

#include "Core/Query/TimelineQueryStore.h"
#include "Editor/Timeline/EditorJobs.h"
#include "Editor/Timeline/TimelineListModel.h"

namespace nomely {

// Fills the timeline's lists: each load takes the place of the one before, shows nothing older than
// the changes of memos made since it began, and can be run again. Main executor alone.
class TimelineLoading {
 public:
  template <typename Value>
  using Property = Published<TimelineLoading, Value>;

  // All must outlive this.
  TimelineLoading(const DayStore& dayStore, SearchIndex* searchIndex, TimelineListModel& list,
                  EditorJobs& jobs);

  Property<bool> hasLoadedInitialTimeline{false};
  Property<bool> isLoadingTimeline{false};
  Property<std::optional<std::string>> activeSearchQuery;
  Property<std::optional<std::string>> currentFilterTag;
  Property<std::size_t> searchResultCount{0};
  Property<std::map<std::string, std::string>> searchSnippets;  // by memoKey
  Property<bool> hasOnThisDay{false};

  void loadDay(Day date);
  void loadAllMemos();
  void loadSearchResults(const std::vector<SearchResult>& results, std::string query);
  void loadMemosWithTag(std::string tag);
  void loadMemosNoTag();
  void loadMemosWithImages();
  void loadMemosWithLinks();
  void loadMemosWithAttachments();
  void loadMemosWithAudio();
  void loadPinnedMemos();
  void loadOnThisDay();
  void refreshOnThisDayFlag();

  // Whether the files may have been changed by someone else than this model.
  enum class Cause { ownWrite, externalWrite };
  // Runs the present mode again, but a filter for an external write alone: what this model changes
  // enters the lists, or leaves them, at once.
  void refreshCurrentTimeline(Cause cause);
  // The loads so far: an equal number means that the same one still stands.
  [[nodiscard]] std::size_t loadNumber() const { return loadNumber_; }
  void cancel() { task_.request_stop(); }

 private:
  using Entries = TimelineQueryStore::Entries;
  using Filter = std::function<Entries(const TimelineQueryStore&)>;
  // What is to be done on the main executor with what was found.
  using Arrival = std::function<void()>;
  using Query = std::function<Arrival(const std::stop_token&)>;

  // What a load does before its query begins.
  enum class Step {
    stopPlayback,
    clearSearch,
    mode,
    tag,
    date,
    firstPage,
    loading,
    filter,
    search,
    empty
  };
  // In these orders, which an observer of one property can see in the others.
  static constexpr Step ofDay[] = {Step::stopPlayback, Step::clearSearch, Step::mode,
                                   Step::tag,          Step::date,        Step::loading};
  static constexpr Step ofAll[] = {Step::stopPlayback, Step::clearSearch, Step::mode,
                                   Step::tag,          Step::firstPage,   Step::loading};
  static constexpr Step ofTag[] = {Step::loading, Step::stopPlayback, Step::clearSearch, Step::mode,
                                   Step::tag,     Step::filter,       Step::empty};
  static constexpr Step ofResults[] = {Step::loading, Step::stopPlayback, Step::clearSearch,
                                       Step::tag,     Step::filter,       Step::mode,
                                       Step::search};
  static constexpr Step ofSearch[] = {Step::loading};
  static constexpr Step ofFilter[] = {Step::stopPlayback, Step::clearSearch, Step::tag,  Step::mode,
                                      Step::filter,       Step::loading,     Step::empty};
  struct Search {
    std::string query;
    std::size_t count = 0;
    std::map<std::string, std::string> snippets = {};
  };
  struct Load {
    std::span<const Step> head;
    Query query;
    TimelineMode mode = TimelineMode::day;
    std::optional<Day> date = {};
    std::optional<std::string> tag = {};
    TimelineListModel::Membership membership = {};
    Filter filter = {};
    Search search = {};
  };

  // Begins a load: its head, then its query.
  void begin(Load load);
  void perform(Step step, Load& load);
  void run(const std::stop_source& task, const Query& query);
  void reloadSearch(const std::string& query);
  void loadFiltered(TimelineMode mode, TimelineListModel::Membership membership,
                    const Filter& filter);
  // A query that shows what `find` returns unless the mode has changed.
  template <typename Find>
  [[nodiscard]] Query shows(TimelineMode mode, Find find);
  // Shows the newest memos, read from their files, and then runs `whole`: nobody has to wait for
  // the index to see what was written last.
  [[nodiscard]] Query newestFirst(Query whole);

  void clearSearchContext();
  void setLoading(bool loading);

  const DayStore& dayStore_;
  SearchIndex* searchIndex_;
  TimelineQueryStore store_;
  TimelineListModel& list_;
  EditorJobs& jobs_;

  Filter filteredQuery_;  // runs the present filter again
  std::stop_source task_{std::nostopstate};
  std::size_t loadNumber_ = 0;
};

}  // namespace nomely
