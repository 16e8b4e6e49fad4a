#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Core/Models/Memo.h"
#include "Platform/Time/Day.h"

namespace nomely {

// What a selection of memos asks for; all that is set holds together. A value.
struct MemoFilter {
  std::optional<Day> from = {};        // inclusive
  std::optional<Day> to = {};          // inclusive
  std::optional<Day> onThisDay = {};   // the same month and day in earlier years
  std::vector<std::string> tags = {};  // the memo has each of them, or one below it
  bool mainTimeline = false;           // imported and generated collections stay out
  bool untagged = false;               // no tag at all: "_x" counts as one
  bool images = false;
  bool links = false;  // "http://" or "https://" in the body, in lower case
  bool audio = false;
  bool files = false;  // attachments that are neither pictures nor sound
  bool pinned = false;

  // Whether memos of that day may be among those asked for.
  [[nodiscard]] bool mayHold(Day day) const;
  // Whether the memo has what is asked for, be it visible or not.
  [[nodiscard]] bool holds(Day day, const Memo& memo) const;
  // The same for lists, in which a memo with neither text nor attachments has no place.
  [[nodiscard]] bool matches(Day day, const Memo& memo) const;

  friend bool operator==(const MemoFilter&, const MemoFilter&) = default;
};

}  // namespace nomely
