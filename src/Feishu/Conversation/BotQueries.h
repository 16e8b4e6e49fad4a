#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Feishu/Conversation/FeishuReplies.h"
#include "Platform/Time/Day.h"

namespace nomely {

// A question for one's own memos: "发我昨天的读书日记".
struct MemoQuery {
  Day startDate;
  Day endDate;  // exclusive
  std::optional<std::string> tag = {};
  std::string label;  // for the reply: "昨天"
  friend bool operator==(const MemoQuery&, const MemoQuery&) = default;
};
// A date without a year is the latest such day that is not in the future.
[[nodiscard]] std::optional<MemoQuery> parseMemoQuery(std::string_view text, Day today);

// "今日一句：天气真好" → "天气真好".
[[nodiscard]] std::optional<std::string> extractTodaySentence(std::string_view text);

// Messages that ask instead of telling.
class BotQueries {
 public:
  // What is referred to must outlive it.
  BotQueries(const FeishuContext& context, FeishuReplies& replies);
  // Waits for the answers under way.
  ~BotQueries();

  // Whether the trimmed text is a question; its answer goes out from a background job.
  bool answer(const std::string& text, const std::string& messageId);
};

}  // namespace nomely
