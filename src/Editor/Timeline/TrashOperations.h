#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Core/Query/TrashManager.h"
#include "Core/Service/MemoService.h"
#include "Editor/Timeline/EditorJobs.h"
#include "Editor/Timeline/MemoWriting.h"
#include "Editor/Timeline/SaveStatus.h"
#include "Editor/Timeline/TimelineListModel.h"
#include "Editor/Timeline/TimelineLoading.h"

namespace nomely {

// The offer to bring back what was deleted last.
struct PendingUndoDelete {
  Uuid id = Uuid::random();  // drawn anew whenever the offer changes
  std::vector<TrashEntry> entries;
  std::string label;
};

// Deletion with undo, and the trash. Operations run one at a time in the order of the calls. Main
// executor alone.
class TrashOperations {
 public:
  template <typename Value>
  using Property = Published<TrashOperations, Value>;
  using Entries = std::vector<TrashEntry>;

  // All must outlive this.
  struct Parts {
    TimelineListModel& list;
    TimelineLoading& loading;
    SaveStatus& status;
    EditorJobs& jobs;
    const MemoWriting& writing;
  };
  TrashOperations(const MemoService& service, const Parts& parts);

  Property<Entries> trashEntries;
  Property<std::optional<PendingUndoDelete>> pendingUndoDelete;
  Property<bool> isLoadingTrash{false};
  Property<bool> isPerformingTrashOperation{false};

  void deleteMemos(const std::vector<TimelineEntry>& entries);
  void loadTrash();
  void batchRestoreTrash(const Entries& entries);
  void batchDeleteTrash(const Entries& entries);
  void emptyTrash();
  void undoDelete();
  void dismissUndo() { pendingUndoDelete.set(std::nullopt); }

 private:
  using Operation = TrashManager::Operation;

  void enqueue(Operation operation);
  void startNext();
  // On the save queue.
  [[nodiscard]] TrashManager::Outcome perform(Operation operation) const;
  void finish(const Operation& operation, const TrashManager::Outcome& outcome);
  void showTrashed(const Entries& moved);
  void pruneUndoOffer(const Entries& trash);

  const MemoService& service_;
  TrashManager trashManager_;
  Parts parts_;

  std::size_t loadGeneration_ = 0;
  std::deque<Operation> queue_;
  std::set<std::string> queuedDeletionKeys_;
};

}  // namespace nomely
