#include "Export/InlineHTML.h"

#include "Core/Markdown/Text/LinkScheme.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr std::size_t nowhere = std::string_view::npos;

std::string escaped(std::string_view text, std::string_view special) {
  std::string result;
  result.reserve(text.size());
  std::size_t copied = 0;
  for (std::size_t at = text.find_first_of(special); at != nowhere;
       at = text.find_first_of(special, copied)) {
    result.append(text.substr(copied, at - copied));
    switch (text[at]) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      default:
        result += "&quot;";
    }
    copied = at + 1;
  }
  return result.append(text.substr(copied));
}

// What mark(.+?)mark matches becomes an element. The text holds no line break.
void replaceMarked(std::string& text, std::string_view mark, std::string_view element) {
  std::size_t opening = text.find(mark);
  if (opening == nowhere) return;
  std::string replaced;
  std::size_t copied = 0;
  while (opening != nowhere) {
    const std::size_t content = opening + mark.size();
    const std::size_t closing = text.find(mark, content + 1);
    if (closing == nowhere) break;
    replaced.append(text, copied, opening - copied);
    replaced.append("<").append(element).append(">");
    replaced.append(text, content, closing - content);
    replaced.append("</").append(element).append(">");
    copied = closing + mark.size();
    opening = text.find(mark, copied);
  }
  text = replaced.append(text, copied);
}

// The quotes of an address; the rest of it is escaped already.
std::string withoutQuotes(std::string_view address) {
  return escaped(address, "\"");
}

// What \[(.+?)\]\((.+?)\) matches becomes a link. The text holds no line break.
void replaceLinks(std::string& text) {
  constexpr std::string_view between = "](";
  std::string replaced;
  std::size_t copied = 0;
  for (std::size_t opening = text.find('['); opening != nowhere; opening = text.find('[', copied)) {
    const std::size_t label = opening + 1;
    const std::size_t middle = text.find(between, label + 1);
    if (middle == nowhere) break;
    const std::size_t address = middle + between.size();
    // Without a ")" from here on no later label has one either.
    const std::size_t closing = text.find(')', address + 1);
    if (closing == nowhere) break;
    const std::string_view target = std::string_view(text).substr(address, closing - address);
    replaced.append(text, copied, opening - copied);
    if (!mayBeLinked(target))
      replaced.append(text, opening, closing + 1 - opening);
    else
      replaced.append("<a href=\"")
          .append(withoutQuotes(target))
          .append("\">")
          .append(text, label, middle - label)
          .append("</a>");
    copied = closing + 1;
  }
  if (copied > 0) text = replaced.append(text, copied);
}

std::string convertSegment(std::string_view segment) {
  std::string text = InlineHTML::escapeText(segment);
  replaceMarked(text, "**", "strong");
  replaceMarked(text, "*", "em");
  replaceMarked(text, "`", "code");
  replaceLinks(text);
  return text;
}

// The next line break in `text`; none of the expressions matches across one.
std::size_t findBreak(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte > 0x0D && byte < 0x80) {
      ++at;
      continue;
    }
    const DecodedCharacter next = decodeFirst(text.substr(at));
    if (isLineBreak(next.value)) return at;
    at += next.length;
  }
  return nowhere;
}

}  // namespace

std::string InlineHTML::escapeText(std::string_view text) {
  return escaped(text, "&<>");
}

std::string InlineHTML::escapeAttribute(std::string_view text) {
  return escaped(text, "&<>\"");
}

std::string InlineHTML::convert(std::string_view line) {
  std::string converted;
  converted.reserve(line.size() + line.size() / 4);
  for (;;) {
    const std::size_t end = findBreak(line);
    converted += convertSegment(line.substr(0, end));
    if (end == nowhere) return converted;
    const std::size_t length = decodeFirst(line.substr(end)).length;
    converted += line.substr(end, length);
    line.remove_prefix(end + length);
  }
}

}  // namespace nomely
