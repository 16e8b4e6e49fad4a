#pragma once

#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "Feishu/Conversation/FeishuReplies.h"
#include "Feishu/Conversation/MemoQuery.h"

namespace nomely {

// Messages that ask instead of telling.
class BotQueries {
 public:
  // What is referred to must outlive it.
  BotQueries(const FeishuContext& context, FeishuReplies& replies)
      : storage_(context.storage()), replies_(replies) {}

  // Whether `answer` takes the trimmed text.
  [[nodiscard]] bool isQuestion(const std::string& text) const;
  // Whether the trimmed text is a question; its answer goes out from a background job, which the
  // end of this object stops.
  bool answer(const std::string& text, const std::string& messageId);

 private:
  using Messages = std::vector<std::string>;

  void inBackground(const std::string& messageId,
                    std::function<Messages(const std::stop_token&)> find);
  [[nodiscard]] Messages memosFor(const MemoQuery& query, const std::stop_token& stop) const;
  [[nodiscard]] Messages randomMemory() const;
  // Before today; absent without a root.
  [[nodiscard]] std::optional<std::vector<Day>> pastDays() const;

  const StoreContext& storage_;
  FeishuReplies& replies_;
  JobPool jobs_{1};
};

}  // namespace nomely
