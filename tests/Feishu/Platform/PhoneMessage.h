#pragma once

#include <string>
#include <utility>
#include <vector>

#include "Platform/Time/Moment.h"

namespace nomely::test {

// What somebody sends to the bot. A value.
//
//   phone::text("om_1", "你好").by("ou_me").at(moment)
class PhoneMessage {
 public:
  // An event that is no message, or no JSON.
  PhoneMessage(std::string id, std::string payload)
      : id_(std::move(id)), payload_(std::move(payload)) {}
  // `content` is JSON, by what the platform says.
  PhoneMessage(std::string id, std::string type, std::string content)
      : id_(std::move(id)), type_(std::move(type)), content_(std::move(content)) {}

  // "ou_me" unless told; empty for a sender that is not told.
  [[nodiscard]] PhoneMessage by(std::string openID) &&;
  // Not told, unless it is here.
  [[nodiscard]] PhoneMessage at(Moment moment) &&;
  [[nodiscard]] PhoneMessage inGroup() &&;

  [[nodiscard]] const std::string& id() const { return id_; }
  // The event's JSON.
  [[nodiscard]] std::string payload() const;

 private:
  std::string id_;
  std::string payload_;
  std::string type_;
  std::string content_;
  std::string sender_ = "ou_me";
  std::string chatType_ = "p2p";
  std::string createTime_;
};

namespace phone {

[[nodiscard]] PhoneMessage text(std::string id, const std::string& text);
[[nodiscard]] PhoneMessage image(std::string id, const std::string& key);
[[nodiscard]] PhoneMessage voice(std::string id, const std::string& key);
[[nodiscard]] PhoneMessage file(std::string id, const std::string& key, const std::string& name);
// A text with a title; a line that begins with "img:" is the picture of that key.
[[nodiscard]] PhoneMessage post(std::string id, const std::string& title,
                                const std::vector<std::string>& lines);

}  // namespace phone

}  // namespace nomely::test
