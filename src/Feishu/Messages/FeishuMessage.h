#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "Feishu/Protocol/FeishuAPI.h"

namespace nomely {

// What a message to the bot says that is to become a memo. A value.
struct FeishuMessage {
  enum class Kind { text, image, audio, post, file };

  // Something to be downloaded.
  struct Resource {
    std::string key;  // a safe name
    FeishuAPI::Resource type = FeishuAPI::Resource::file;
    friend bool operator==(const Resource&, const Resource&) = default;
  };

  Kind kind = Kind::text;
  std::string messageId = {};  // a safe name; empty when it came with none
  std::string text = {};       // of a text or post; of a file its name
  std::vector<Resource> resources = {};

  // What log lines call it: "图片".
  [[nodiscard]] std::string_view noun() const {
    constexpr std::array<std::string_view, 5> nouns{"消息", "图片", "语音", "图文", "文件"};
    return nouns[static_cast<std::size_t>(kind)];
  }
  // Whether it takes no more than a write to the disk to record it.
  [[nodiscard]] bool isTextAlone() const { return resources.empty(); }

  friend bool operator==(const FeishuMessage&, const FeishuMessage&) = default;
};

}  // namespace nomely
