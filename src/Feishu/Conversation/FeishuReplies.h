#pragma once

#include <memory>
#include <stop_token>
#include <string>
#include <vector>

#include "Feishu/Conversation/FeishuLogStore.h"
#include "Feishu/FeishuAccount.h"
#include "Feishu/FeishuContext.h"

namespace nomely {

// What the bot says in the chat. The calls without a token return at once: they log, and the rest
// is a background job whose failure is only logged. Any thread.
class FeishuReplies {
 public:
  // What is referred to must outlive it.
  FeishuReplies(const FeishuContext& context, const FeishuAccount& account, FeishuLogStore& log);

  // Nothing for an empty id.
  void reactThumbsUp(const std::string& messageId);
  void reactCry(const std::string& messageId);
  // One after the other, each when the one before has gone out.
  void replyMessage(const std::string& messageId, std::vector<std::string> texts);

  // The right to ask the platform, renewed five minutes before it ends and when the account has
  // changed. Blocks; throws as FeishuAPI::fetchToken does.
  [[nodiscard]] std::string token(const std::stop_token& stop);
};

}  // namespace nomely
