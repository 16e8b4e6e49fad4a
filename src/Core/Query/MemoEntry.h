#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Core/Models/Memo.h"
#include "Platform/Time/Day.h"

namespace nomely {

// A memo in a list, with the day on which it stands. The memo is shared, so that lists are cheap to
// copy, and never changes.
struct MemoEntry {
  Day date;
  std::shared_ptr<const Memo> memo;
};

// Whether `left` comes before `right` in lists. Newest first: by day, then by `time` as text, then
// by number.
[[nodiscard]] bool orderedBefore(const MemoEntry& left, const MemoEntry& right);
// The same order for two memos of one day.
[[nodiscard]] bool orderedBeforeInDay(const Memo& left, const Memo& right);

// "2026-03-01-7": what names a memo in sets and maps of a running program.
[[nodiscard]] std::string memoKey(Day date, std::int64_t seqNumber);

// Whether lists show it: it has text or attachments.
[[nodiscard]] bool isVisible(const Memo& memo);

}  // namespace nomely
