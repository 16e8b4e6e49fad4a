#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "Core/Query/TimelineQueryStore.h"
#include "Core/Storage/TrashStore.h"

namespace nomely {

// Carries out the trash operations of a user interface in batches. Stateless; blocking, for a
// background thread. The caller sees to it that only one operation runs at a time.
class TrashManager {
 public:
  using Entries = std::vector<TrashEntry>;

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

  explicit TrashManager(TrashStore trash) : trash_(std::move(trash)) {}

  // Ends at the first failure; what was done until then stays done. Never throws.
  [[nodiscard]] Outcome perform(const Operation& operation) const;

 private:
  TrashStore trash_;
};

}  // namespace nomely
