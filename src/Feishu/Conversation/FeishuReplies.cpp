#include "Feishu/Conversation/FeishuReplies.h"

#include <exception>
#include <utility>

#include "Platform/Cancellation.h"
#include "Platform/System/Log.h"

namespace nomely {

FeishuReplies::FeishuReplies(const FeishuContext& context, const FeishuAccount& account,
                             FeishuLogStore& log)
    : platform_{context.http, context.platformRoot},
      log_(log),
      token_(platform_, account, context.storage().clock) {}

void FeishuReplies::reactThumbsUp(const std::string& messageId) {
  react(messageId, "THUMBSUP", "👍 已记录");
}

void FeishuReplies::reactCry(const std::string& messageId) {
  react(messageId, "CRY", "😢 记录失败");
}

void FeishuReplies::react(const std::string& messageId, const char* emoji, const char* logged) {
  if (messageId.empty()) return;
  log_.logOutgoing(logged);
  inBackground(reacting_, "表情标记失败", [this, messageId, emoji](const std::stop_token& stop) {
    FeishuAPI::addReaction(platform_, {messageId, token(stop)}, emoji, stop);
  });
}

void FeishuReplies::replyMessage(const std::string& messageId, std::vector<std::string> texts) {
  inBackground(replying_, "回复失败",
               [this, messageId, texts = std::move(texts)](const std::stop_token& stop) {
                 for (const std::string& text : texts) {
                   log_.logOutgoing(text);
                   FeishuAPI::replyToMessage(platform_, {messageId, token(stop)}, text, stop);
                 }
               });
}

void FeishuReplies::inBackground(JobPool& jobs, const char* failed,
                                 std::function<void(const std::stop_token&)> work) {
  jobs.submit([failed, work = std::move(work)](const std::stop_token& stop) {
    try {
      work(stop);
    } catch (const CancellationError&) {
      // Whoever ends the bot doesn't wait for what it still had to say.
    } catch (const std::exception& error) {
      Log::error(LogChannel::feishu, "{}：{}", failed, error.what());
    }
  });
}

}  // namespace nomely
