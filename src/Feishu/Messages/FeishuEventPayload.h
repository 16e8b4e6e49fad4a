#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Feishu/Messages/FeishuMessage.h"
#include "Platform/Time/Clock.h"

namespace nomely {

// An event of the platform: somebody sent a message. What is missing in its JSON, or of another
// type than it should be, is empty here. A value.
struct FeishuEventPayload {
  std::string createTime = {};   // milliseconds since 1970, as text
  std::string openId = {};       // of the sender
  std::string messageId = {};    // empty also when it is no safe name
  std::string chatType = {};     // "p2p": with the bot alone
  std::string messageType = {};  // "text", "image", "audio", "post", "file" and others
  std::string content = {};      // JSON

  // Throws JsonError for what is no JSON, nests more than 64 deep, or has no "event" with a
  // "message".
  [[nodiscard]] static FeishuEventPayload decode(std::string_view json);

  // When the message was sent. Absent when that can't be told, or is no moment between 2000 and
  // the end of tomorrow.
  [[nodiscard]] std::optional<Moment> eventCreateTime(const Clock& clock) const;

  // The trimmed text of a text message.
  [[nodiscard]] std::optional<std::string> textBody() const;
  // Members of `content`, where they are safe names.
  [[nodiscard]] std::optional<std::string> imageKey() const;
  [[nodiscard]] std::optional<std::string> audioFileKey() const;

  // What is to be recorded. Absent for other kinds, for texts of white space, for media without a
  // key or a message id, by which alone they can be fetched, and for a post of more than 100 media.
  [[nodiscard]] std::optional<FeishuMessage> message() const;
};

}  // namespace nomely
