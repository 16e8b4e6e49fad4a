#include "Feishu/Connection/IncomingFrames.h"

#include <cstdint>
#include <optional>
#include <utility>

#include "Core/Extensions/TextNumbers.h"
#include "Feishu/Connection/LoggedName.h"
#include "Platform/Error.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

constexpr std::int32_t dataMethod = 1;

std::int64_t numberIn(const FeishuFrame& frame, std::string_view key, std::int64_t otherwise) {
  return parseDecimal(frame.headerValue(key).value_or("")).value_or(otherwise);
}

FeishuFrame acknowledgement(const FeishuFrame& original) {
  return {.seqID = original.seqID,
          .logID = original.logID,
          .service = original.service,
          .method = dataMethod,
          .payload = R"({"code":200})"};
}

}  // namespace

void IncomingFrames::handleIncomingData(std::string_view bytes) {
  std::optional<FeishuFrame> frame = FeishuFrame::decode(bytes);
  if (!frame) return Log::error(LogChannel::feishu, "Frame 解码失败，丢弃");
  if (frame->method == 0 || frame->headerValue("type") != "event") return;
  FragmentJoiner::Fragment fragment{.messageId = frame->headerValue("message_id").value_or(""),
                                    .sum = numberIn(*frame, "sum", 1),
                                    .seq = numberIn(*frame, "seq", 0)};
  if (fragment.sum <= 1) return handOver(frame->payload, *frame);
  fragment.payload = std::exchange(frame->payload, {});
  if (const auto whole = fragments_.add(std::move(fragment))) handOver(*whole, *frame);
}

void IncomingFrames::handOver(const std::string& payload, const FeishuFrame& original) {
  if (payload.empty())
    return Log::error(LogChannel::feishu, "事件没有内容，不确认 msg_id={}",
                      loggedName(original.headerValue("message_id").value_or("")));
  // Not the frame itself, whose payload may be large and the acknowledgement far off.
  const auto acknowledge = [sender = sender_, frame = acknowledgement(original)] {
    sender->send(frame);
  };
  // One event that can't be handled must not end the connection of those to come; unacknowledged,
  // it comes again. Only our own errors are known to quote no message.
  try {
    events_.handleEventPayload(payload, acknowledge);
  } catch (const Error& error) {
    Log::error(LogChannel::feishu, "处理事件失败：{}", error.what());
  } catch (const std::exception&) {
    Log::error(LogChannel::feishu, "处理事件失败");
  }
}

}  // namespace nomely
