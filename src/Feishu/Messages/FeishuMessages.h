#pragma once

#include <cstddef>
#include <deque>
#include <string>

#include "Feishu/Connection/FeishuEvents.h"
#include "Feishu/Conversation/BotPairing.h"
#include "Feishu/Conversation/BotQueries.h"
#include "Feishu/Conversation/FeishuLogStore.h"
#include "Feishu/Conversation/FeishuReplies.h"
#include "Feishu/FeishuAccount.h"
#include "Feishu/FeishuContext.h"
#include "Feishu/Messages/FeishuEventPayload.h"
#include "Feishu/Messages/FeishuInbox.h"
#include "Feishu/Messages/FeishuMemoWriter.h"
#include "Feishu/Messages/InboxWork.h"
#include "Platform/Concurrency/SerialQueue.h"

namespace nomely {

// Decides what becomes of an event, and acknowledges it: when its message is a memo or lies in the
// inbox, or when it is never to be recorded. What was not acknowledged comes again, so that each
// message of the user's becomes one memo, whatever fails or ends in between.
//
// Lives on the bridge's queue, but for construction and destruction.
class FeishuMessages final : public FeishuEvents {
 public:
  // Of how many messages the ids are remembered; older ones are known by their memos.
  static constexpr std::size_t maxDedup = 200;

  // What is referred to must outlive it.
  FeishuMessages(const FeishuContext& context, FeishuAccount& account, SerialQueue& bridgeQueue,
                 FeishuReplies& replies, BotQueries& queries, FeishuLogStore& log);
  // Stops what is under way and waits for it; what is not yet a memo lies in the inbox.
  ~FeishuMessages() override = default;
  FeishuMessages(const FeishuMessages&) = delete;
  FeishuMessages& operator=(const FeishuMessages&) = delete;

  // Goes on with what lies in the inbox, once for each object. Any thread.
  void start() { work_.resume(); }

  void handleEventPayload(const std::string& payload, const Acknowledge& acknowledge) override;

 private:
  void handle(const FeishuEventPayload& event, const Acknowledge& acknowledge);
  // Whether the event is the code by which its sender becomes the only user.
  [[nodiscard]] bool pairs(const FeishuEventPayload& event, const Acknowledge& acknowledge);
  // Whether the id is one that has been seen; else it has from here on.
  [[nodiscard]] bool hasSeen(const std::string& messageId);
  void forget(const std::string& messageId);
  [[nodiscard]] bool answer(const std::string& question, const std::string& messageId);
  void recordText(FeishuMessage message, Moment date, const Acknowledge& acknowledge);
  void recordMedia(const FeishuMessage& message, Moment date, const Acknowledge& acknowledge);
  void failed(const FeishuMessage& message, const std::string& reason);

  const FeishuContext& context_;
  FeishuAccount& account_;
  FeishuReplies& replies_;
  BotQueries& queries_;
  FeishuLogStore& log_;
  BotPairing pairing_;
  FeishuMemoWriter writer_;
  std::deque<std::string> processedMessageIDs_;
  InboxWork work_;  // ends first: its jobs use the rest
};

}  // namespace nomely
