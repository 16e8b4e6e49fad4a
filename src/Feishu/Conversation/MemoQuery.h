#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Query/MemoEntry.h"
#include "Platform/Time/Day.h"

namespace nomely {

// A question for one's own memos: "发我昨天的读书日记".
struct MemoQuery {
  Day startDate;
  Day endDate;  // exclusive
  std::optional<std::string> tag = {};
  std::string label;  // for the reply: "昨天"

  // Whether the memo has the tag that is asked for, in upper or lower case.
  [[nodiscard]] bool asksFor(const Memo& memo) const;

  friend bool operator==(const MemoQuery&, const MemoQuery&) = default;
};
// A date without a year is the latest such day that is not in the future.
[[nodiscard]] std::optional<MemoQuery> parseMemoQuery(std::string_view text, Day today);

// "今日一句：天气真好" → "天气真好".
[[nodiscard]] std::optional<std::string> extractTodaySentence(std::string_view text);

// The messages that answer with what was found, the oldest first.
[[nodiscard]] std::vector<std::string> answerTo(const MemoQuery& query,
                                                std::vector<MemoEntry> found);
// The messages that show one memo out of the past.
[[nodiscard]] std::vector<std::string> memoryOf(Day day, const Memo& memo);

// Whether it has pictures or sound, which a message of text can only mention.
[[nodiscard]] bool hasMediaAttachments(const Memo& memo);

}  // namespace nomely
