#include <algorithm>

#include <fmt/format.h>

#include "Editor/DayViewModel.h"

namespace nomely {
namespace {

std::set<std::string> keysOf(const std::vector<TrashEntry>& entries) {
  std::set<std::string> keys;
  for (const TrashEntry& entry : entries)
    keys.insert(DayViewModel::memoKey(entry.originalDate, entry.memo.seqNumber));
  return keys;
}

}  // namespace

void DayViewModel::deleteMemo(const Memo& memo, std::optional<Day> date) {
  deleteMemos({{resolvedDate(memo, date), memo}});
}

void DayViewModel::deleteMemos(const std::vector<TimelineEntry>& entries) {
  performTrashOperation(TrashManager::Move{entries});
}

void DayViewModel::restoreFromTrash(const TrashEntry& entry) {
  performTrashOperation(TrashManager::Restore{{entry}});
}

void DayViewModel::batchRestoreTrash(const TrashEntries& entries) {
  if (!entries.empty()) performTrashOperation(TrashManager::Restore{entries});
}

void DayViewModel::batchDeleteTrash(const TrashEntries& entries) {
  if (!entries.empty()) performTrashOperation(TrashManager::Delete{entries});
}

void DayViewModel::emptyTrash() {
  performTrashOperation(TrashManager::Empty{});
}

void DayViewModel::undoDelete() {
  if (pendingUndoDelete.get() && !isPerformingTrashOperation.get())
    performTrashOperation(TrashManager::Restore{pendingUndoDelete.get()->entries});
}

void DayViewModel::dismissUndo() {
  pendingUndoDelete.set(std::nullopt);
}

void DayViewModel::performTrashOperation(TrashManager::Operation operation) {
  if (auto* move = std::get_if<TrashManager::Move>(&operation)) {
    // A second press while the first is on its way would find nothing to delete.
    std::erase_if(move->memos, [this](const TimelineEntry& entry) {
      return !queuedDeletionKeys_.insert(memoKey(entry.date, entry.memo.seqNumber)).second;
    });
    if (move->memos.empty()) return;
  }
  queuedTrashOperations_.push_back(std::move(operation));
  startNextTrashOperation();
}

void DayViewModel::startNextTrashOperation() {
  if (isPerformingTrashOperation.get() || queuedTrashOperations_.empty()) return;
  TrashManager::Operation operation = std::move(queuedTrashOperations_.front());
  queuedTrashOperations_.pop_front();
  isPerformingTrashOperation.set(true);
  isLoadingTrash.set(false);
  ++trashLoadGeneration_;  // a listing on its way is of the trash as it was
  saveState.set(SaveState::saving());
  saveQueue_.async([this, operation = std::move(operation)] {
    onMain([this, operation, outcome = trashManager_.perform(operation)] {
      finishTrashOperation(operation, outcome);
    });
  });
}

void DayViewModel::finishTrashOperation(const TrashManager::Operation& operation,
                                        const TrashManager::Outcome& outcome) {
  trashEntries.set(outcome.entries);
  isPerformingTrashOperation.set(false);
  const auto* move = std::get_if<TrashManager::Move>(&operation);
  if (move)
    for (const auto& [date, memo] : move->memos)
      queuedDeletionKeys_.erase(memoKey(date, memo.seqNumber));

  if (!outcome.moved.empty())
    showTrashed(outcome.moved);
  else
    pruneUndoOffer(outcome.entries);

  if (move || std::holds_alternative<TrashManager::Restore>(operation)) {
    refreshCurrentTimeline(Cause::externalWrite);
    if (onSavedSuccessfully) onSavedSuccessfully();
  }
  if (outcome.failure)
    announceFailure("回收站操作未全部完成，已刷新实际结果：" + *outcome.failure);
  else
    saveState.set(SaveState::saved(now()));
  startNextTrashOperation();
}

// The lists lose what was moved, and the offer counts what really was.
void DayViewModel::showTrashed(const TrashEntries& moved) {
  const std::set<std::string> keys = keysOf(moved);
  allMemos.modify([&](Entries& entries) {
    std::erase_if(entries, [&](const MemoEntry& entry) {
      return keys.contains(memoKey(entry.date, entry.memo->seqNumber));
    });
  });
  recomputeDisplayMemos();
  memos.modify([&](std::vector<Memo>& list) {
    std::erase_if(list, [&](const Memo& memo) {
      return keys.contains(memoKey(selectedDate.get(), memo.seqNumber));
    });
  });
  pendingUndoDelete.set(
      PendingUndoDelete{.entries = moved, .label = fmt::format("已删除 {} 条", moved.size())});
}

// Only what is still in the trash can be brought back.
void DayViewModel::pruneUndoOffer(const TrashEntries& trash) {
  if (!pendingUndoDelete.get()) return;
  PendingUndoDelete offer = *pendingUndoDelete.get();
  std::erase_if(offer.entries, [&](const TrashEntry& entry) {
    return std::ranges::find(trash, entry.trashSubdir, &TrashEntry::trashSubdir) == trash.end();
  });
  offer.id = Uuid::random();
  pendingUndoDelete.set(offer.entries.empty() ? std::nullopt : std::optional(std::move(offer)));
}

void DayViewModel::loadTrash() {
  if (isLoadingTrash.get()) return;
  const std::size_t generation = ++trashLoadGeneration_;
  isLoadingTrash.set(true);
  saveQueue_.async([this, generation] {
    onMain([this, generation, entries = service_.trashed()] {
      if (generation != trashLoadGeneration_) return;
      trashEntries.set(entries);
      isLoadingTrash.set(false);
    });
  });
}

}  // namespace nomely
