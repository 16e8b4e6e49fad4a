#pragma once

#include <string>
#include <vector>

#include "Feishu/Messages/FeishuMessage.h"
#include "Platform/Text/Json.h"

namespace nomely {

// A rich-text message as Markdown: its title, its lines, and what they show.
//
//   {"title": "周末", "content": [[{"tag": "text", "text": "去 "},
//                                  {"tag": "a", "text": "这里", "href": "https://a.b"}]]}
//   → "周末\n去 [这里](https://a.b)"
//
// Elements of unknown kinds give their text, if they have any.
struct PostContent {
  std::string text;  // trimmed
  std::vector<FeishuMessage::Resource> resources;

  // `content` may also have the post below the name of its language. Anything else is empty.
  [[nodiscard]] static PostContent of(const Json& content);
};

}  // namespace nomely
