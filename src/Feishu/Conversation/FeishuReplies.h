#pragma once

#include <functional>
#include <stop_token>
#include <string>
#include <vector>

#include "Feishu/Conversation/FeishuLogStore.h"
#include "Feishu/Conversation/PlatformToken.h"
#include "Feishu/FeishuContext.h"
#include "Platform/Concurrency/JobPool.h"

namespace nomely {

// What the bot says in the chat. The calls without a token return at once: the rest is a background
// job whose failure is only logged, and which the end of this object stops. No request is repeated.
// Any thread.
class FeishuReplies {
 public:
  // What is referred to must outlive it.
  FeishuReplies(const FeishuContext& context, const FeishuAccount& account, FeishuLogStore& log);

  // Nothing for an empty id.
  void reactThumbsUp(const std::string& messageId);
  void reactCry(const std::string& messageId);
  // One after the other, each when the one before has gone out; one that fails ends it.
  void replyMessage(const std::string& messageId, std::vector<std::string> texts);

  // The right to ask the platform. Blocks; throws as FeishuAPI::fetchToken does.
  [[nodiscard]] std::string token(const std::stop_token& stop) { return token_.get(stop); }

 private:
  void react(const std::string& messageId, const char* emoji, const char* logged);
  static void inBackground(JobPool& jobs, const char* failed,
                           std::function<void(const std::stop_token&)> work);

  FeishuAPI::Platform platform_;
  FeishuLogStore& log_;
  PlatformToken token_;
  // A year of notes may be an hour of replies, for which no reaction waits.
  JobPool reacting_{2};
  JobPool replying_{2};
};

}  // namespace nomely
