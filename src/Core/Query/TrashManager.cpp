#include "Core/Query/TrashManager.h"

namespace nomely {

void TrashManager::perform(const Move& move, SearchIndex* searchIndex, Entries& moved) const {
  for (const auto& [date, memo] : move.memos) {
    moved.push_back({date, memo, dayStore_.trashMemo(date, memo)});
    if (searchIndex) searchIndex->removeMemo(date, memo.seqNumber);
  }
}

TrashManager::Outcome TrashManager::perform(const Operation& operation,
                                            SearchIndex* searchIndex) const {
  Outcome outcome;
  try {
    if (const auto* move = std::get_if<Move>(&operation))
      perform(*move, searchIndex, outcome.moved);
    else if (const auto* restore = std::get_if<Restore>(&operation))
      dayStore_.restoreTrashEntries(restore->entries);
    else if (const auto* remove = std::get_if<Delete>(&operation))
      dayStore_.deleteTrashEntries(remove->entries);
    else
      dayStore_.emptyTrash();
  } catch (const std::exception& error) {
    outcome.failure = error.what();
  }
  // Some may be back although not all are, and under new numbers.
  if (searchIndex && std::holds_alternative<Restore>(operation)) searchIndex->invalidateCache();
  outcome.entries = dayStore_.listTrash();
  return outcome;
}

}  // namespace nomely
