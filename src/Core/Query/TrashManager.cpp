#include "Core/Query/TrashManager.h"

namespace nomely {

TrashManager::Outcome TrashManager::perform(const Operation& operation) const {
  Outcome outcome;
  try {
    trash_.finishInterrupted();
    if (const auto* move = std::get_if<Move>(&operation))
      for (const auto& [date, memo] : move->memos)
        outcome.moved.push_back({date, memo, trash_.trashMemo(date, memo)});
    else if (const auto* restore = std::get_if<Restore>(&operation))
      trash_.restoreTrashEntries(restore->entries);
    else if (const auto* remove = std::get_if<Delete>(&operation))
      trash_.deleteTrashEntries(remove->entries);
    else
      trash_.emptyTrash();
  } catch (const std::exception& error) {
    outcome.failure = error.what();
  }
  outcome.entries = trash_.listTrash();
  return outcome;
}

}  // namespace nomely
