#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

#include "Core/Storage/DraftStore.h"
#include "Editor/Timeline/EditorJobs.h"
#include "Editor/Timeline/MemoWriting.h"
#include "Editor/Timeline/SaveStatus.h"
#include "Editor/Timeline/TimelineListModel.h"
#include "Editor/Timeline/TimelineLoading.h"
#include "Editor/Timeline/TrashOperations.h"
#include "Import/ImportUndoManager.h"

namespace nomely {

// The timeline's state and what a user does with it: which memos are shown, how a change reaches
// the disk and comes back into the lists, deletion with undo, and the trash.
//
// Lives on the main executor, and so do all its calls, properties and callbacks; nothing blocks it.
// Every write runs on one serial queue, so that the order of a user's changes is that of the files.
// Lists are read on background jobs after the writes that were begun before. Destruction waits for
// writes under way; callbacks are then no longer called.
class DayViewModel {
  // The parts stand first: the properties below are theirs.
  TimelineListModel list_;
  SaveStatus status_;
  EditorJobs jobs_;
  TimelineLoading loading_;
  MemoWriting writing_;
  TrashOperations trash_;
  DraftStore draftStore_;

 public:
  using Entries = TimelineListModel::Entries;
  using TrashEntries = TrashOperations::Entries;
  using CompleteMemo = MemoWriting::CompleteMemo;
  using MemoCompletion = MemoWriting::MemoCompletion;
  using ImportCompletion = MemoWriting::ImportCompletion;
  using Cause = TimelineLoading::Cause;

  // What is referred to must outlive the model.
  struct Context {
    const MemoService& service;
    SearchIndex* searchIndex = nullptr;
    MainExecutor& executor;
    JobPool& jobs;
    std::filesystem::path machineDrafts = {};  // see DraftStore
  };

  explicit DayViewModel(const Context& context);
  ~DayViewModel();
  DayViewModel(const DayViewModel&) = delete;
  DayViewModel& operator=(const DayViewModel&) = delete;

  // Banners, cleared by whoever shows them, and the text of the quick input.
  Observable<std::optional<std::string>>& lastError = status_.lastError;
  Observable<std::optional<std::string>> lastSuccess;
  Observable<std::string> newMemoText;

  // The lists.
  const TimelineListModel::Property<std::vector<Memo>>& memos = list_.memos;
  const TimelineListModel::Property<Entries>& allMemos = list_.allMemos;
  const TimelineListModel::Property<Entries>& displayMemos = list_.displayMemos;
  const TimelineListModel::Property<Day>& selectedDate = list_.selectedDate;
  const TimelineListModel::Property<TimelineMode>& timelineMode = list_.timelineMode;

  // Loading.
  template <typename Value>
  using OfLoading = const TimelineLoading::Property<Value>&;
  OfLoading<bool> hasLoadedInitialTimeline = loading_.hasLoadedInitialTimeline;
  OfLoading<bool> isLoadingTimeline = loading_.isLoadingTimeline;
  OfLoading<std::optional<std::string>> activeSearchQuery = loading_.activeSearchQuery;
  OfLoading<std::optional<std::string>> currentFilterTag = loading_.currentFilterTag;
  OfLoading<std::size_t> searchResultCount = loading_.searchResultCount;
  OfLoading<std::map<std::string, std::string>> searchSnippets = loading_.searchSnippets;
  OfLoading<bool> hasOnThisDay = loading_.hasOnThisDay;

  // Writing. `onSavedSuccessfully` is called after each save that went well, before saveState says
  // so.
  const Published<SaveStatus, SaveState>& saveState = status_.saveState;
  std::function<void()>& onSavedSuccessfully = status_.onSavedSuccessfully;

  // The trash.
  template <typename Value>
  using OfTrash = const TrashOperations::Property<Value>&;
  OfTrash<TrashEntries> trashEntries = trash_.trashEntries;
  OfTrash<std::optional<PendingUndoDelete>> pendingUndoDelete = trash_.pendingUndoDelete;
  OfTrash<bool> isLoadingTrash = trash_.isLoadingTrash;
  OfTrash<bool> isPerformingTrashOperation = trash_.isPerformingTrashOperation;

  // The text that isn't saved yet.
  [[nodiscard]] const DraftStore& draftStore() const { return draftStore_; }

  // The timeline. Each load takes the place of the one before.
  void loadDay(Day date) { loading_.loadDay(date); }
  void loadAllMemos() { loading_.loadAllMemos(); }
  void loadSearchResults(const std::vector<SearchResult>& results, std::string query) {
    loading_.loadSearchResults(results, std::move(query));
  }
  void loadMemosWithTag(std::string tag) { loading_.loadMemosWithTag(std::move(tag)); }
  void loadMemosNoTag() { loading_.loadMemosNoTag(); }
  void loadMemosWithImages() { loading_.loadMemosWithImages(); }
  void loadMemosWithLinks() { loading_.loadMemosWithLinks(); }
  void loadMemosWithAttachments() { loading_.loadMemosWithAttachments(); }
  void loadMemosWithAudio() { loading_.loadMemosWithAudio(); }
  void loadPinnedMemos() { loading_.loadPinnedMemos(); }
  void loadOnThisDay() { loading_.loadOnThisDay(); }
  void refreshOnThisDayFlag() { loading_.refreshOnThisDayFlag(); }
  void refreshCurrentTimeline(Cause cause) { loading_.refreshCurrentTimeline(cause); }

  // In `all` mode the list grows by 50, or to its end.
  void loadMoreDisplayMemos() { list_.showMore(); }
  void loadAllDisplayMemos() { list_.showToTheEnd(); }
  [[nodiscard]] bool canLoadMoreDisplayMemos() const { return list_.canShowMore(); }
  [[nodiscard]] std::optional<std::string> searchSnippet(Day date, std::int64_t seqNumber) const;

  // Writing. Where a date is left out it is that of the memo in the timeline, else selectedDate.
  // A failure is told by saveState and, except where a completion tells it, by lastError.

  // The lists change when the file has; for an editor that knows the state it began with. Completes
  // with the memo as stored.
  void saveMemoAsync(Memo memo, Day date, std::optional<Memo> expected, MemoCompletion completion) {
    writing_.saveMemoAsync(std::move(memo), date, std::move(expected), std::move(completion));
  }
  // The lists change at once, and back when the write fails.
  void updateMemo(Memo memo, std::optional<Day> date = {}) {
    writing_.updateMemo(std::move(memo), date);
  }
  // These change the lists' own copy where they have one, however old the caller's is.
  void togglePinned(const Memo& memo, std::optional<Day> date = {}) {
    writing_.togglePinned(memo, date);
  }
  void toggleLockedOnTop(const Memo& memo, std::optional<Day> date = {}) {
    writing_.toggleLockedOnTop(memo, date);
  }
  // The lists stay as they are: whoever asked for the memo refreshes them.
  void createCompleteMemo(CompleteMemo content, MemoCompletion completion) {
    writing_.createCompleteMemo(std::move(content), std::move(completion));
  }
  void moveMemo(Memo memo, Day from, Day to) { writing_.moveMemo(std::move(memo), from, to); }
  void deleteMemo(const Memo& memo, std::optional<Day> date = {}) {
    trash_.deleteMemos({{list_.dateOf(memo, date), memo}});
  }
  void deleteMemos(const std::vector<TimelineEntry>& entries) { trash_.deleteMemos(entries); }
  // Copies a file into the folder of that day, selectedDate when left out.
  void importAttachment(const std::filesystem::path& file, std::optional<Day> date,
                        ImportCompletion completion) {
    writing_.importAttachment(file, date, std::move(completion));
  }
  void importAttachmentToMemo(const std::filesystem::path& file, Memo memo,
                              std::optional<Day> date = {}) {
    writing_.importAttachmentToMemo(file, std::move(memo), date);
  }

  // Calls back once every write that was begun before has ended.
  void afterWrites(std::function<void()> completion) {
    jobs_.write([] { return true; }, [completion = std::move(completion)](bool) { completion(); });
  }

  // The trash. Operations run one at a time in the order of the calls.
  void loadTrash() { trash_.loadTrash(); }
  void restoreFromTrash(const TrashEntry& entry) { trash_.batchRestoreTrash({entry}); }
  void batchRestoreTrash(const TrashEntries& entries) { trash_.batchRestoreTrash(entries); }
  void batchDeleteTrash(const TrashEntries& entries) { trash_.batchDeleteTrash(entries); }
  void emptyTrash() { trash_.emptyTrash(); }
  void undoDelete() { trash_.undoDelete(); }
  void dismissUndo() { trash_.dismissUndo(); }

  // Imports. After the writes begun before, the memos of all flomo imports, or of the latest one of
  // Apple Notes, go to the trash; `completion` gets their number.
  using UndoCompletion = std::function<void(std::size_t moved)>;
  void undoFlomoImport(UndoCompletion completion);
  void undoLatestNotesImport(UndoCompletion completion);

 private:
  using Undo = std::size_t (ImportUndoManager::*)(const ImportRun&) const;
  void undoImport(Undo undo, UndoCompletion completion);

  const MemoService& service_;
  std::stop_source ending_;
};

}  // namespace nomely
