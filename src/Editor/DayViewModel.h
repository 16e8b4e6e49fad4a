#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Query/SearchIndex.h"
#include "Core/Query/TimelineQueryStore.h"
#include "Core/Query/TrashManager.h"
#include "Core/Service/MemoService.h"
#include "Core/Storage/AttachmentManager.h"
#include "Platform/Concurrency/JobGroup.h"
#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/Concurrency/Observable.h"
#include "Platform/Concurrency/SerialQueue.h"

namespace nomely {

// One date, every date, the answer to a search or filter, or the pinned memos.
enum class TimelineMode { day, all, filtered, pinned };

// How the latest write stands.
struct SaveState {
  enum class Kind { saved, failed, idle, saving };

  Kind kind = Kind::idle;
  Moment at{};          // of `saved`
  std::string message;  // of `failed`

  [[nodiscard]] static SaveState saved(Moment at) { return {Kind::saved, at, {}}; }
  [[nodiscard]] static SaveState failed(std::string message) {
    return {Kind::failed, {}, std::move(message)};
  }
  [[nodiscard]] static SaveState saving() { return {Kind::saving, {}, {}}; }

  friend bool operator==(const SaveState&, const SaveState&) = default;
};

// The offer to bring back what was deleted last.
struct PendingUndoDelete {
  Uuid id = Uuid::random();  // drawn anew whenever the offer changes
  std::vector<TrashEntry> entries;
  std::string label;
};

// The timeline's state and what a user does with it: which memos are shown, how a change reaches
// the disk and comes back into the lists, deletion with undo, and the trash.
//
// Lives on the main executor, and so do all its calls, properties and callbacks; nothing blocks it.
// Every write runs on one serial queue, so that the order of a user's changes is that of the files.
// Lists are read on background jobs behind the writes that were begun before. Destruction waits for
// writes under way; callbacks are then no longer called.
class DayViewModel {
 public:
  template <typename Value>
  using Property = Published<DayViewModel, Value>;
  using Entries = std::vector<MemoEntry>;
  using TrashEntries = std::vector<TrashEntry>;

  // What is referred to must outlive the model.
  struct Context {
    const MemoService& service;
    SearchIndex* searchIndex = nullptr;
    MainExecutor& executor;
    JobPool& jobs;
  };

  // What the input field has collected.
  struct CompleteMemo {
    std::string body = {};
    std::vector<std::string> tags = {};
    std::optional<std::int64_t> mood = {};
    std::vector<std::string> attachments = {};
    std::map<std::string, AudioTranscript> transcripts = {};
    std::map<std::string, std::string> originalNames = {};
    Day date;
    std::map<std::string, Day> sourceDates = {};  // where attachments lie
    Day fallbackDate;                             // where those lie that it lacks
  };

  // Null for success.
  using Completion = std::function<void(std::exception_ptr failure)>;
  // Exactly one of the two.
  using MemoCompletion = std::function<void(std::optional<Memo> memo, std::exception_ptr failure)>;
  using ImportCompletion = std::function<void(std::optional<AttachmentManager::ImportResult>)>;

  explicit DayViewModel(const Context& context);
  ~DayViewModel();
  DayViewModel(const DayViewModel&) = delete;
  DayViewModel& operator=(const DayViewModel&) = delete;

  // Banners, cleared by whoever shows them, and the text of the quick input.
  Observable<std::optional<std::string>> lastError;
  Observable<std::optional<std::string>> lastSuccess;
  Observable<std::string> newMemoText;

  Property<SaveState> saveState;
  Property<std::vector<Memo>> memos;  // of selectedDate
  Property<Entries> allMemos;         // all that the present mode found
  Property<Entries> displayMemos;     // what of it is shown, in the order shown
  Property<bool> hasLoadedInitialTimeline{false};
  Property<bool> isLoadingTimeline{false};
  Property<Day> selectedDate;
  Property<TimelineMode> timelineMode{TimelineMode::day};
  Property<std::optional<std::string>> activeSearchQuery;
  Property<std::optional<std::string>> currentFilterTag;
  Property<std::size_t> searchResultCount{0};
  Property<std::map<std::string, std::string>> searchSnippets;  // by memoKey
  Property<bool> hasOnThisDay{false};
  Property<TrashEntries> trashEntries;
  Property<std::optional<PendingUndoDelete>> pendingUndoDelete;
  Property<bool> isLoadingTrash{false};
  Property<bool> isPerformingTrashOperation{false};

  // Called after each save that went well, before saveState says so.
  std::function<void()> onSavedSuccessfully;

  // "yyyy-MM-dd-N"
  [[nodiscard]] static std::string memoKey(Day date, std::int64_t seqNumber);

  // The timeline. Each load takes the place of the one before.
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
  // Runs the present mode again. A filter runs again for an external write alone: what this model
  // changes enters the lists, or leaves them, at once.
  void refreshCurrentTimeline(Cause cause);

  // In `all` mode the list grows by 50, or to its end.
  void loadMoreDisplayMemos();
  void loadAllDisplayMemos();
  [[nodiscard]] bool canLoadMoreDisplayMemos() const;
  [[nodiscard]] std::optional<std::string> searchSnippet(Day date, std::int64_t seqNumber) const;

  // Writing. Where a date is left out it is that of the memo in the timeline, else selectedDate.
  // A failure is told by saveState and, except where a completion tells it, by lastError.

  // The lists change when the file has; for an editor that knows the state it began with.
  void saveMemoAsync(Memo memo, Day date, std::optional<Memo> expected, Completion completion);
  // The lists change at once, and back when the write fails.
  void updateMemo(Memo memo, std::optional<Day> date = {});
  void togglePinned(Memo memo, std::optional<Day> date = {});
  void toggleLockedOnTop(Memo memo, std::optional<Day> date = {});
  // The lists stay as they are: whoever asked for the memo refreshes them.
  void createCompleteMemo(CompleteMemo content, MemoCompletion completion);
  void moveMemo(Memo memo, Day from, Day to);
  void deleteMemo(const Memo& memo, std::optional<Day> date = {});
  void deleteMemos(const std::vector<TimelineEntry>& entries);
  // Copies a file into the folder of that day, selectedDate when left out.
  void importAttachment(const std::filesystem::path& file, std::optional<Day> date,
                        ImportCompletion completion);
  void importAttachmentToMemo(const std::filesystem::path& file, Memo memo,
                              std::optional<Day> date = {});

  // The trash. Operations run one at a time in the order of the calls.
  void loadTrash();
  void restoreFromTrash(const TrashEntry& entry);
  void batchRestoreTrash(const TrashEntries& entries);
  void batchDeleteTrash(const TrashEntries& entries);
  void emptyTrash();
  void undoDelete();
  void dismissUndo();

 private:
  static constexpr std::size_t displayStep = 50;

  using Membership = std::function<bool(const Memo&)>;
  using Query = std::function<Entries(const TimelineQueryStore&)>;

  // Runs `body` on the main executor unless the model is gone by then.
  void onMain(std::function<void()> body);
  [[nodiscard]] Moment now() const { return dayStore_.context().clock.now(); }

  // Loading.
  void cancelLoad();
  void clearSearchContext();
  void setMode(TimelineMode mode);
  void setLoading(bool loading);
  void showNothing();
  void showAll(Entries entries);
  void recomputeDisplayMemos();
  void reloadSearch(const std::string& query);
  void loadTimelineQuery(TimelineMode mode, Membership membership, Query query);
  template <typename Find, typename Apply>
  void startLoad(Find find, Apply apply);

  // Writing.
  [[nodiscard]] Day resolvedDate(const Memo& memo, std::optional<Day> date) const;
  [[nodiscard]] const MemoEntry* entryOf(Day date, std::int64_t seqNumber) const;
  void updateMemoryState(const Memo& memo, Day date);
  void updateDayList(const Memo& memo, Day date);
  [[nodiscard]] std::optional<Memo> readBack(Day date, std::int64_t seqNumber) const;
  void rollBack(const Memo& failed, Day date, const Memo& onDisk);
  void showMoved(std::int64_t seqNumber, Day from, const Memo& moved, Day to);
  void announceSaved();
  void announceFailure(const std::string& message);

  // The trash.
  void performTrashOperation(TrashManager::Operation operation);
  void startNextTrashOperation();
  void finishTrashOperation(const TrashManager::Operation& operation,
                            const TrashManager::Outcome& outcome);
  void showTrashed(const TrashEntries& moved);
  void pruneUndoOffer(const TrashEntries& trash);

  const MemoService& service_;
  const DayStore& dayStore_;
  SearchIndex* searchIndex_;
  MainExecutor& executor_;
  AttachmentManager attachmentManager_;
  TimelineQueryStore timelineQueryStore_;
  TrashManager trashManager_;

  Membership filterMembership_;  // whether a changed memo stays in the filtered list
  Query filteredQuery_;          // runs the present filter again
  std::optional<std::stop_source> allMemosLoadTask_;
  std::size_t displayLimit_;
  std::size_t trashLoadGeneration_ = 0;
  std::deque<TrashManager::Operation> queuedTrashOperations_;
  std::set<std::string> queuedDeletionKeys_;

  std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
  const std::weak_ptr<const bool> watch_{alive_};  // for jobs on other threads

  // In this order: the queue's jobs may submit background jobs, and both use the members above.
  JobGroup jobs_;
  SerialQueue saveQueue_{"com.nomely.save"};
};

}  // namespace nomely
