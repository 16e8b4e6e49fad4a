#include "Core/Markdown/Clipboard/HtmlText.h"

#include "Core/Extensions/TextNumbers.h"
#include "Core/Markdown/Clipboard/HtmlScanner.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

bool isScalar(std::int64_t number) {
  return number >= 0 && number <= 0x10FFFF && (number < 0xD800 || number > 0xDFFF);
}

std::string decodeNumbers(std::string_view text) {
  constexpr std::string_view opening = "&#";
  std::string decoded;
  decoded.reserve(text.size());
  std::size_t copied = 0;
  for (std::size_t at = text.find(opening); at != std::string_view::npos;
       at = text.find(opening, at + 1)) {
    const std::size_t digits = at + opening.size();
    const std::size_t end = text.find_first_not_of("0123456789", digits);
    if (end == std::string_view::npos || text[end] != ';') continue;
    const auto number = parseDecimal(text.substr(digits, end - digits));
    if (!number || !isScalar(*number)) continue;
    decoded.append(text.substr(copied, at - copied));
    appendUtf8(decoded, static_cast<char32_t>(*number));
    copied = end + 1;
  }
  return decoded.append(text.substr(copied));
}

}  // namespace

std::string HtmlText::replacingAll(std::string_view text, std::string_view from,
                                   std::string_view to) {
  std::string replaced;
  replaced.reserve(text.size());
  std::size_t copied = 0;
  for (std::size_t at = text.find(from); at != std::string_view::npos;
       at = text.find(from, copied)) {
    replaced.append(text.substr(copied, at - copied)).append(to);
    copied = at + from.size();
  }
  return replaced.append(text.substr(copied));
}

std::string HtmlText::decodeEntities(std::string_view text) {
  std::string decoded(text);
  if (text.find('&') == std::string_view::npos) return decoded;
  constexpr struct {
    std::string_view entity;
    std::string_view character;
  } entities[] = {{"&nbsp;", " "}, {"&amp;", "&"},   {"&lt;", "<"},
                  {"&gt;", ">"},   {"&quot;", "\""}, {"&#39;", "'"}};
  for (const auto& [entity, character] : entities)
    if (decoded.find(entity) != std::string::npos)
      decoded = replacingAll(decoded, entity, character);
  return decodeNumbers(decoded);
}

std::string HtmlText::withoutTags(std::string_view text) {
  return replacing(text, HtmlScanner::anyTags(text), [](std::string_view) { return ""; });
}

std::string HtmlText::labelText(std::string_view html) {
  const std::string lines =
      replacing(html, HtmlScanner::lineBreaks(html), [](std::string_view) { return "\n"; });
  return std::string(trimSpaceAndBreaks(decodeEntities(withoutTags(lines))));
}

std::string HtmlText::normalizeBlankLines(std::string_view text) {
  std::string normalized;
  normalized.reserve(text.size());
  bool isBehindEmpty = false;
  const auto addLine = [&](std::string_view line) {
    line = trimHorizontal(line);
    if (line.empty() && isBehindEmpty) return;
    isBehindEmpty = line.empty();
    normalized.append(line).append("\n");
  };
  std::size_t begin = 0;
  for (std::size_t at = 0; at < text.size();) {
    const DecodedCharacter next = decodeFirst(text.substr(at));
    if (isLineBreak(next.value)) {
      addLine(text.substr(begin, at - begin));
      begin = at + next.length;
    }
    at += next.length;
  }
  addLine(text.substr(begin));
  return std::string(trimSpaceAndBreaks(normalized));
}

std::string HtmlText::prefixingLines(std::string_view text, std::string_view prefix) {
  return std::string(prefix) + replacingAll(text, "\n", "\n" + std::string(prefix));
}

}  // namespace nomely
