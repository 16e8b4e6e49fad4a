#include "Feishu/Messages/PostContent.h"

#include <algorithm>
#include <string_view>

#include <fmt/format.h>

#include "Feishu/Messages/JsonMembers.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

// A fence that no line of the code ends.
std::string fenced(const std::string& language, std::string_view code) {
  std::size_t longest = 2;
  for (std::size_t at = 0; at < code.size(); ++at) {
    const std::size_t end = std::min(code.find_first_not_of('`', at), code.size());
    longest = std::max(longest, end - at);
    at = end;
  }
  const std::string fence(longest + 1, '`');
  const bool isWord =
      std::ranges::all_of(language, [](char c) { return c > ' ' && c != '`' && c != '\x7F'; });
  return fmt::format("{}{}\n{}\n{}", fence, isWord ? language : "", code, fence);
}

class Reading {
 public:
  void paragraph(const Json& elements) {
    std::string line;
    if (elements.is_array())
      for (const Json& element : elements) line += textFor(element);
    lines_ += '\n';
    lines_ += line;
  }
  void title(const std::string& text) { lines_ += text; }

  [[nodiscard]] PostContent result() && {
    return {std::string(trimSpaceAndBreaks(lines_)), std::move(resources_)};
  }

 private:
  std::string textFor(const Json& element) {
    const std::string tag = textOf(element, "tag");
    std::string text = textOf(element, "text");
    if (tag == "a") return link(text, textOf(element, "href"));
    if (tag == "at") return at(textOf(element, "user_name"));
    if (tag == "img") return show(textOf(element, "image_key"), FeishuAPI::Resource::image);
    if (tag == "media") return show(textOf(element, "file_key"), FeishuAPI::Resource::file);
    if (tag == "code_block") return fenced(textOf(element, "language"), text);
    if (tag == "hr") return "\n---";
    if (tag == "emotion") return fmt::format("[{}]", textOf(element, "emoji_type"));
    return text;
  }

  static std::string link(const std::string& text, const std::string& href) {
    if (text.empty() || text == href) return href;
    return href.empty() ? text : fmt::format("[{}]({})", text, href);
  }
  static std::string at(const std::string& name) { return name.empty() ? "" : "@" + name; }

  std::string show(std::string key, FeishuAPI::Resource type) {
    const FeishuMessage::Resource resource{std::move(key), type};
    if (FeishuAPI::isSafeName(resource.key) && std::ranges::count(resources_, resource) == 0)
      resources_.push_back(resource);
    return {};
  }

  std::string lines_;
  std::vector<FeishuMessage::Resource> resources_;
};

}  // namespace

PostContent PostContent::of(const Json& content) {
  const Json* post = &content;
  if (content.is_object() && !memberOf(content, "content").is_array())
    for (const Json& inLanguage : content)
      if (memberOf(inLanguage, "content").is_array()) {
        post = &inLanguage;
        break;
      }
  Reading reading;
  reading.title(textOf(*post, "title"));
  if (const Json& paragraphs = memberOf(*post, "content"); paragraphs.is_array())
    for (const Json& elements : paragraphs) reading.paragraph(elements);
  return std::move(reading).result();
}

}  // namespace nomely
