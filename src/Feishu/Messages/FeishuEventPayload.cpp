#include "Feishu/Messages/FeishuEventPayload.h"

#include <charconv>
#include <cmath>

#include "Core/Extensions/PathNames.h"
#include "Feishu/Messages/JsonMembers.h"
#include "Feishu/Messages/PostContent.h"
#include "Platform/Text/JsonReading.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

using Kind = FeishuMessage::Kind;

Json contentOf(const FeishuEventPayload& event) {
  try {
    return readJson(event.content);
  } catch (const JsonError&) {
    return {};
  }
}

std::optional<std::string> keyOf(const FeishuEventPayload& event, const char* name) {
  std::string key = textOf(contentOf(event), name);
  return FeishuAPI::isSafeName(key) ? std::optional(std::move(key)) : std::nullopt;
}

// What a name that came from outside may show: one line, and no folders.
std::string fileNameOf(const FeishuEventPayload& event) {
  constexpr std::size_t longest = 200;  // characters
  std::string name = textOf(contentOf(event), "file_name");
  for (char& byte : name)
    if (static_cast<unsigned char>(byte) < ' ' || byte == '\x7F') byte = ' ';
  name = trimSpaceAndBreaks(lastComponent(name));
  return std::string(graphemePrefix(name, longest));
}

FeishuMessage recording(Kind kind, std::string text, std::vector<FeishuMessage::Resource> media) {
  return {.kind = kind, .text = std::move(text), .resources = std::move(media)};
}

// As it would be if everything it names could be fetched.
FeishuMessage wholeMessage(const FeishuEventPayload& event) {
  using FeishuAPI::Resource;
  if (event.messageType == "text") return recording(Kind::text, event.textBody().value_or(""), {});
  if (event.messageType == "image") {
    if (auto key = event.imageKey()) return recording(Kind::image, "", {{*key, Resource::image}});
  } else if (event.messageType == "audio") {
    if (auto key = event.audioFileKey())
      return recording(Kind::audio, "", {{*key, Resource::file}});
  } else if (event.messageType == "file") {
    if (auto key = event.audioFileKey())
      return recording(Kind::file, fileNameOf(event), {{*key, Resource::file}});
  } else if (event.messageType == "post") {
    PostContent post = PostContent::of(contentOf(event));
    return recording(Kind::post, std::move(post.text), std::move(post.resources));
  }
  return {};
}

}  // namespace

FeishuEventPayload FeishuEventPayload::decode(std::string_view json) {
  const Json document = readJson(json);
  const Json& message = memberOf(memberOf(document, "event"), "message");
  if (!message.is_object()) throw JsonError("json.member", "缺少 event.message");
  FeishuEventPayload event{
      .createTime = textOf(memberOf(document, "header"), "create_time"),
      .openId =
          textOf(memberOf(memberOf(memberOf(document, "event"), "sender"), "sender_id"), "open_id"),
      .messageId = textOf(message, "message_id"),
      .chatType = textOf(message, "chat_type"),
      .messageType = textOf(message, "message_type"),
      .content = textOf(message, "content")};
  if (!FeishuAPI::isSafeName(event.messageId)) event.messageId.clear();
  return event;
}

std::optional<Moment> FeishuEventPayload::eventCreateTime(const Clock& clock) const {
  double milliseconds = 0;
  const char* const end = createTime.data() + createTime.size();
  const auto [stop, error] = std::from_chars(createTime.data(), end, milliseconds);
  if (error != std::errc() || stop != end) return std::nullopt;
  const Moment earliest = Day::from(2000, 1, 1)->start();
  const Moment latest = clock.today().plusDays(2).start();
  const auto millisecondsOf = [](Moment moment) {
    return static_cast<double>(moment.time_since_epoch().count()) / 1000;
  };
  if (!(milliseconds >= millisecondsOf(earliest) && milliseconds < millisecondsOf(latest)))
    return std::nullopt;
  return Moment(std::chrono::microseconds(std::llround(milliseconds * 1000)));
}

std::optional<std::string> FeishuEventPayload::textBody() const {
  if (messageType != "text") return std::nullopt;
  const Json read = contentOf(*this);
  if (!memberOf(read, "text").is_string()) return std::nullopt;
  return std::string(trimSpaceAndBreaks(textOf(read, "text")));
}

std::optional<std::string> FeishuEventPayload::imageKey() const {
  return keyOf(*this, "image_key");
}

std::optional<std::string> FeishuEventPayload::audioFileKey() const {
  return keyOf(*this, "file_key");
}

std::optional<FeishuMessage> FeishuEventPayload::message() const {
  FeishuMessage message = wholeMessage(*this);
  message.messageId = messageId;
  // Nothing can be fetched without the id; what a post says stays.
  if (messageId.empty()) message.resources.clear();
  const bool hasText =
      !message.text.empty() && (message.kind == Kind::text || message.kind == Kind::post);
  constexpr std::size_t mostResources = 100;
  if (message.resources.size() > mostResources) return std::nullopt;
  if (message.resources.empty() && !hasText) return std::nullopt;
  return message;
}

}  // namespace nomely
