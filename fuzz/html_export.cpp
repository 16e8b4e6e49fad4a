// Memo bodies that are foreign: a page holds no element but those of the converter, whole and with
// nothing of the body's in their tags but an address, which runs no script.

#include <algorithm>
#include <array>

#include "Core/Markdown/Text/LinkScheme.h"
#include "Export/InlineHTML.h"
#include "Export/MarkdownHTML.h"
#include "Platform/Text/Unicode.h"
#include "fuzz/Fuzzing.h"

namespace {

using namespace nomely;
using fuzz::require;

constexpr std::array<std::string_view, 45> ownTags{"p",
                                                   "/p",
                                                   "h1",
                                                   "/h1",
                                                   "h2",
                                                   "/h2",
                                                   "h3",
                                                   "/h3",
                                                   "hr",
                                                   "ul",
                                                   "/ul",
                                                   "ol",
                                                   "/ol",
                                                   "li",
                                                   "/li",
                                                   "pre",
                                                   "/pre",
                                                   "code",
                                                   "/code",
                                                   "strong",
                                                   "/strong",
                                                   "em",
                                                   "/em",
                                                   "/a",
                                                   "table",
                                                   "/table",
                                                   "thead",
                                                   "/thead",
                                                   "tbody",
                                                   "/tbody",
                                                   "tr",
                                                   "/tr",
                                                   "th",
                                                   "/th",
                                                   "td",
                                                   "/td",
                                                   "div",
                                                   "/div",
                                                   "blockquote",
                                                   "/blockquote",
                                                   "ul class=\"checklist\"",
                                                   "input type=\"checkbox\" disabled",
                                                   "input type=\"checkbox\" checked disabled"};

// The length of the tag at the start of `html`.
std::size_t checkTag(std::string_view html) {
  constexpr std::string_view link = "<a href=\"";
  if (html.starts_with(link)) {
    const std::size_t end = html.find('"', link.size());
    require(end != std::string_view::npos && html.substr(end).starts_with("\">"));
    const std::string_view address = html.substr(link.size(), end - link.size());
    // Marks inside of an address become elements in name only: in an attribute they are text.
    require(mayBeLinked(address));
    return end + 2;
  }
  const std::size_t end = html.find('>');
  require(end != std::string_view::npos);
  std::string_view tag = html.substr(1, end - 1);
  if (const std::size_t style = tag.find(" style=\""); style != std::string_view::npos) {
    require(tag.ends_with('"') && tag.find('"', style + 8) == tag.size() - 1);
    tag = tag.substr(0, style);
  }
  require(std::ranges::find(ownTags, tag) != ownTags.end());
  return end + 1;
}

void check(std::string_view html) {
  require(isValidUtf8(html));
  for (std::size_t at = html.find('<'); at != std::string_view::npos; at = html.find('<', at))
    at += checkTag(html.substr(at));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = toUtf8(toUtf16(fuzz::textOf(data, size)));
  check(markdownToHTML(text, RenderMode::plain));
  check(markdownToHTML(text, RenderMode::styled));
  const std::string attribute = InlineHTML::escapeAttribute(text);
  require(attribute.find_first_of("<>\"") == std::string::npos);
  return 0;
}
