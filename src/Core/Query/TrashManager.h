#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "Core/Query/SearchIndex.h"
#include "Core/Query/TimelineQueryStore.h"
#include "Core/Storage/DayStore.h"

namespace nomely {

// Carries out the trash operations of a user interface in batches and keeps the search index in
// step. Stateless; blocking, for a background thread. One operation at a time is the caller's care.
class TrashManager {
 public:
  using Entries = std::vector<DayStore::TrashEntry>;

  struct Move {
    std::vector<TimelineEntry> memos;
  };
  struct Restore {
    Entries entries;
  };
  // For good.
  struct Delete {
    Entries entries;
  };
  // All of the trash, for good.
  struct Empty {};
  using Operation = std::variant<Move, Restore, Delete, Empty>;

  struct Outcome {
    Entries entries;                     // the trash as it is afterwards
    Entries moved;                       // what a Move put there
    std::optional<std::string> failure;  // why it ended early, for the user
  };

  explicit TrashManager(DayStore dayStore) : dayStore_(std::move(dayStore)) {}

  // Ends at the first failure; what was done until then stays done. Never throws.
  [[nodiscard]] Outcome perform(const Operation& operation, SearchIndex* searchIndex) const;

 private:
  void perform(const Move& move, SearchIndex* searchIndex, Entries& moved) const;

  DayStore dayStore_;
};

}  // namespace nomely
