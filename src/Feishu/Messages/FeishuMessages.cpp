#include "Feishu/Messages/FeishuMessages.h"

#include <algorithm>
#include <string_view>

#include "Feishu/Connection/LoggedName.h"
#include "Platform/System/Log.h"
#include "Platform/Text/JsonReading.h"

namespace nomely {
namespace {

using Kind = FeishuMessage::Kind;
using WriteResult = FeishuMemoWriter::WriteResult;

}  // namespace

FeishuMessages::FeishuMessages(const FeishuContext& context, FeishuAccount& account,
                               SerialQueue& bridgeQueue, FeishuReplies& replies,
                               BotQueries& queries, FeishuLogStore& log)
    : context_(context),
      account_(account),
      replies_(replies),
      queries_(queries),
      log_(log),
      pairing_(context.stateFolder, context.storage().files, context.storage().clock),
      writer_(context.memos),
      work_(context, bridgeQueue, replies, writer_) {}

void FeishuMessages::handleEventPayload(const std::string& payload,
                                        const Acknowledge& acknowledge) {
  if (payload.empty()) return Log::error(LogChannel::feishu, "收到没有内容的事件，不确认");
  std::optional<FeishuEventPayload> event;
  try {
    event = FeishuEventPayload::decode(payload);
  } catch (const JsonError& error) {
    Log::error(LogChannel::feishu, "事件解析失败：{}", error.what());
    return acknowledge();
  }
  handle(*event, acknowledge);
}

void FeishuMessages::handle(const FeishuEventPayload& event, const Acknowledge& acknowledge) {
  const std::string& messageId = event.messageId;
  if (event.chatType != "p2p") {
    Log::information(LogChannel::feishu, "忽略群聊消息 chat_type={} msg_id={}",
                     loggedName(event.chatType), messageId);
    return acknowledge();
  }
  if (pairs(event, acknowledge)) return;
  const std::string allowed = account_.config().allowedOpenID;
  if (!allowed.empty() && event.openId != allowed) {
    Log::information(LogChannel::feishu, "忽略非白名单发送者 open_id={}", loggedName(event.openId));
    return acknowledge();
  }
  if (hasSeen(messageId)) {
    Log::information(LogChannel::feishu, "跳过重复消息 {}", messageId);
    return acknowledge();
  }
  if (const auto text = event.textBody(); text == "/状态" || text == "/zt") {
    replies_.replyMessage(messageId, {"Nomely 已连接 ✓"});
    context_.tell({.kind = BotEvent::Kind::answered});
    return acknowledge();
  }
  auto message = event.message();
  if (!message) {
    replies_.reactCry(messageId);
    return acknowledge();
  }
  const StoreContext& storage = context_.storage();
  const Moment date = event.eventCreateTime(storage.clock).value_or(storage.clock.now());
  try {
    if (message->isTextAlone())
      recordText(std::move(*message), date, acknowledge);
    else
      recordMedia(*message, date, acknowledge);
  } catch (...) {
    // A fault of the program's: the message has to come again.
    forget(messageId);
    throw;
  }
}

bool FeishuMessages::pairs(const FeishuEventPayload& event, const Acknowledge& acknowledge) {
  const auto text = event.textBody();
  if (!text || event.openId.empty() || !pairing_.matches(*text)) return false;
  try {
    context_.saveAllowedOpenID(event.openId);
  } catch (const Error& error) {
    // The code holds until it has done its work: the message comes again.
    Log::error(LogChannel::feishu, "绑定没能保存：{}", error.what());
    replies_.reactCry(event.messageId);
    context_.tell({.kind = BotEvent::Kind::failed, .detail = error.what()});
    return true;
  }
  FeishuConfig config = account_.config();
  config.allowedOpenID = event.openId;
  account_.set(std::move(config));
  pairing_.end();
  (void)hasSeen(event.messageId);  // comes it again, the code is no message to be recorded
  replies_.replyMessage(event.messageId, {"已绑定，以后只有你能使用这个机器人。"});
  context_.tell({.kind = BotEvent::Kind::paired});
  acknowledge();
  return true;
}

bool FeishuMessages::hasSeen(const std::string& messageId) {
  if (messageId.empty()) return false;
  auto& ids = processedMessageIDs_;
  if (std::ranges::find(ids, messageId) != ids.end() || work_.inbox().holds(messageId)) return true;
  ids.push_back(messageId);
  if (ids.size() > maxDedup) ids.pop_front();
  return false;
}

// What else there is to do for a text comes after its ack: those who write the log or ask the
// platform would compete with the write for gate and processor.
void FeishuMessages::recordText(FeishuMessage message, Moment date,
                                const Acknowledge& acknowledge) {
  const std::string said = message.text;
  if (message.kind == Kind::text) {
    if (queries_.isQuestion(said) && answer(said, message.messageId)) return acknowledge();
    if (auto sentence = extractTodaySentence(said)) message.text = std::move(*sentence);
  }
  const WriteResult result =
      writer_.writeMemo({.body = message.text, .messageId = message.messageId, .date = date});
  if (result.stands()) acknowledge();
  log_.logIncoming(said);
  if (result.kind == WriteResult::Kind::duplicate)
    Log::information(LogChannel::feishu, "跳过重复消息 msg_id={}", message.messageId);
  if (result.kind == WriteResult::Kind::success) {
    replies_.reactThumbsUp(message.messageId);
    context_.tell({.kind = BotEvent::Kind::recorded, .place = result.place});
  }
  if (result.stands()) return;
  Log::error(LogChannel::feishu, "写 memo 失败：{}", result.reason);
  failed(message, result.reason);
  try {
    work_.beginLater(work_.inbox().put(message, date));
  } catch (const Error& error) {
    Log::error(LogChannel::feishu, "收件箱写不进去：{}", error.what());
    forget(message.messageId);
  }
}

bool FeishuMessages::answer(const std::string& question, const std::string& messageId) {
  log_.logIncoming(question);
  if (!queries_.answer(question, messageId)) return false;
  context_.tell({.kind = BotEvent::Kind::answered});
  return true;
}

void FeishuMessages::recordMedia(const FeishuMessage& message, Moment date,
                                 const Acknowledge& acknowledge) {
  const std::string_view noun = message.noun();
  if (writer_.isDuplicateMessageId(message.messageId, Day::of(date))) {
    Log::information(LogChannel::feishu, "跳过重复{} msg_id={}", noun, message.messageId);
    return acknowledge();
  }
  const bool isPost = message.kind == Kind::post && !message.text.empty();
  log_.logIncoming(isPost ? message.text : fmt::format("[{}]", noun));
  try {
    work_.begin(work_.inbox().put(message, date), acknowledge);
  } catch (const Error& error) {
    Log::error(LogChannel::feishu, "收件箱写不进去：{}", error.what());
    failed(message, error.what());
    forget(message.messageId);
  }
}

void FeishuMessages::failed(const FeishuMessage& message, const std::string& reason) {
  replies_.reactCry(message.messageId);
  context_.tell({.kind = BotEvent::Kind::failed, .detail = reason});
}

// So that it is worked on anew when it comes again.
void FeishuMessages::forget(const std::string& messageId) {
  std::erase(processedMessageIDs_, messageId);
}

}  // namespace nomely
