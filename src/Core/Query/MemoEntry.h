#pragma once

#include <memory>

#include "Core/Models/Memo.h"
#include "Platform/Time/Day.h"

namespace nomely {

// A memo in a list, with the day on which it stands. The memo is shared, so that lists are cheap to
// copy, and never changes.
struct MemoEntry {
  Day date;
  std::shared_ptr<const Memo> memo;
};

// Newest first: by day, then by `time` as text, then by number.
[[nodiscard]] bool orderedBefore(const MemoEntry& left, const MemoEntry& right);

// Whether lists show it: it has text or attachments.
[[nodiscard]] bool isVisible(const Memo& memo);

}  // namespace nomely
