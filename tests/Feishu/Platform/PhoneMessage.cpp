#include "Feishu/Platform/PhoneMessage.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace nomely::test {

using nlohmann::json;

PhoneMessage PhoneMessage::by(std::string openID) && {
  sender_ = std::move(openID);
  return std::move(*this);
}

PhoneMessage PhoneMessage::at(Moment moment) && {
  const auto since = std::chrono::floor<std::chrono::milliseconds>(moment.time_since_epoch());
  createTime_ = std::to_string(since.count());
  return std::move(*this);
}

PhoneMessage PhoneMessage::inGroup() && {
  chatType_ = "group";
  return std::move(*this);
}

std::string PhoneMessage::payload() const {
  if (type_.empty()) return payload_;
  json header = {{"event_id", "ev_" + id_}, {"event_type", "im.message.receive_v1"}};
  if (!createTime_.empty()) header["create_time"] = createTime_;
  json sender = {{"sender_type", "user"}, {"tenant_key", "t"}};
  if (!sender_.empty())
    sender["sender_id"] = {{"open_id", sender_}, {"union_id", "on_1"}, {"user_id", nullptr}};
  return json{{"schema", "2.0"},
              {"header", header},
              {"event",
               {{"sender", sender},
                {"message",
                 {{"message_id", id_},
                  {"chat_id", "oc_1"},
                  {"chat_type", chatType_},
                  {"message_type", type_},
                  {"content", content_}}}}}}
      .dump();
}

namespace phone {

PhoneMessage text(std::string id, const std::string& text) {
  return {std::move(id), "text", json{{"text", text}}.dump()};
}

PhoneMessage image(std::string id, const std::string& key) {
  return {std::move(id), "image", json{{"image_key", key}}.dump()};
}

PhoneMessage voice(std::string id, const std::string& key) {
  return {std::move(id), "audio", json{{"file_key", key}, {"duration", 2000}}.dump()};
}

PhoneMessage file(std::string id, const std::string& key, const std::string& name) {
  return {std::move(id), "file", json{{"file_key", key}, {"file_name", name}}.dump()};
}

PhoneMessage post(std::string id, const std::string& title, const std::vector<std::string>& lines) {
  constexpr std::string_view picture = "img:";
  json paragraphs = json::array();
  for (const std::string& line : lines)
    paragraphs.push_back(
        json::array({line.starts_with(picture)
                         ? json{{"tag", "img"}, {"image_key", line.substr(picture.size())}}
                         : json{{"tag", "text"}, {"text", line}, {"style", json::array()}}}));
  return {std::move(id), "post", json{{"title", title}, {"content", paragraphs}}.dump()};
}

}  // namespace phone

}  // namespace nomely::test
