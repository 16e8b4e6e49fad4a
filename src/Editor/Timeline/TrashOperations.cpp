#include "Editor/Timeline/TrashOperations.h"

#include <algorithm>

#include <fmt/format.h>

namespace nomely {

TrashOperations::TrashOperations(const MemoService& service, const Parts& parts)
    : service_(service), trashManager_(service.trashStore()), parts_(parts) {}

void TrashOperations::deleteMemos(const std::vector<TimelineEntry>& entries) {
  TrashManager::Move move{entries};
  // A second press while the first is on its way would find nothing to delete.
  std::erase_if(move.memos, [this](const TimelineEntry& entry) {
    return !queuedDeletionKeys_.insert(memoKey(entry.date, entry.memo.seqNumber)).second;
  });
  if (!move.memos.empty()) enqueue(std::move(move));
}

void TrashOperations::batchRestoreTrash(const Entries& entries) {
  if (!entries.empty()) enqueue(TrashManager::Restore{entries});
}

void TrashOperations::batchDeleteTrash(const Entries& entries) {
  if (!entries.empty()) enqueue(TrashManager::Delete{entries});
}

void TrashOperations::emptyTrash() {
  enqueue(TrashManager::Empty{});
}

void TrashOperations::undoDelete() {
  if (pendingUndoDelete.get() && !isPerformingTrashOperation.get())
    enqueue(TrashManager::Restore{pendingUndoDelete.get()->entries});
}

void TrashOperations::enqueue(Operation operation) {
  queue_.push_back(std::move(operation));
  startNext();
}

void TrashOperations::startNext() {
  if (isPerformingTrashOperation.get() || queue_.empty()) return;
  Operation operation = std::move(queue_.front());
  queue_.pop_front();
  isPerformingTrashOperation.set(true);
  isLoadingTrash.set(false);
  ++loadGeneration_;  // a listing on its way is of the trash as it was
  parts_.status.begin();
  parts_.jobs.write(
      [this, operation] { return perform(operation); },
      [this, operation](const TrashManager::Outcome& outcome) { finish(operation, outcome); });
}

TrashManager::Outcome TrashOperations::perform(Operation operation) const {
  if (auto* move = std::get_if<TrashManager::Move>(&operation))
    for (auto& [date, memo] : move->memos) memo = parts_.writing.asStored(memo, date);
  return trashManager_.perform(operation);
}

void TrashOperations::finish(const Operation& operation, const TrashManager::Outcome& outcome) {
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
    parts_.loading.refreshCurrentTimeline(TimelineLoading::Cause::externalWrite);
    parts_.status.callBack();
  }
  if (outcome.failure)
    parts_.status.fail("回收站操作未全部完成，已刷新实际结果：" + *outcome.failure);
  else
    parts_.status.succeed();
  startNext();
}

// The lists lose what was moved, and the offer counts what really was.
void TrashOperations::showTrashed(const Entries& moved) {
  std::set<std::string> keys;
  for (const TrashEntry& entry : moved)
    keys.insert(memoKey(entry.originalDate, entry.memo.seqNumber));
  parts_.list.removeAll(
      [&](Day date, const Memo& memo) { return keys.contains(memoKey(date, memo.seqNumber)); });
  pendingUndoDelete.set(
      PendingUndoDelete{.entries = moved, .label = fmt::format("已删除 {} 条", moved.size())});
}

// Only what is still in the trash can be brought back.
void TrashOperations::pruneUndoOffer(const Entries& trash) {
  if (!pendingUndoDelete.get()) return;
  PendingUndoDelete offer = *pendingUndoDelete.get();
  std::erase_if(offer.entries, [&](const TrashEntry& entry) {
    return std::ranges::find(trash, entry.trashSubdir, &TrashEntry::trashSubdir) == trash.end();
  });
  offer.id = Uuid::random();
  pendingUndoDelete.set(offer.entries.empty() ? std::nullopt : std::optional(std::move(offer)));
}

void TrashOperations::loadTrash() {
  if (isLoadingTrash.get()) return;
  const std::size_t generation = ++loadGeneration_;
  isLoadingTrash.set(true);
  parts_.jobs.write([this] { return service_.trashed(); },
                    [this, generation](Entries entries) {
                      if (generation != loadGeneration_) return;
                      trashEntries.set(std::move(entries));
                      isLoadingTrash.set(false);
                    });
}

}  // namespace nomely
