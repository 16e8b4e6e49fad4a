#include "Core/Markdown/Clipboard/HtmlText.h"

#include <algorithm>

#include "Core/Extensions/TextNumbers.h"
#include "Core/Markdown/Clipboard/HtmlScanner.h"
#include "Platform/Text/Replacing.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

bool isScalar(std::int64_t number) {
  return number >= 0 && number <= 0x10FFFF && (number < 0xD800 || number > 0xDFFF);
}

std::string decodeNumbers(std::string_view text, char less) {
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
    if (*number == '<')
      decoded += less;
    else
      appendUtf8(decoded, static_cast<char32_t>(*number));
    copied = end + 1;
  }
  return decoded.append(text.substr(copied));
}

}  // namespace

std::string HtmlText::hidingMarkup(std::string text) {
  std::ranges::replace(text, '<', hiddenLess);
  std::ranges::replace(text, '&', hiddenAnd);
  return text;
}

std::string HtmlText::showingMarkup(std::string text) {
  std::ranges::replace(text, hiddenLess, '<');
  std::ranges::replace(text, hiddenAnd, '&');
  return text;
}

std::string HtmlText::decodeEntities(std::string_view text, char less) {
  std::string decoded(text);
  if (text.find('&') == std::string_view::npos) return decoded;
  const struct {
    std::string_view entity;
    std::string_view character;
  } entities[] = {{"&nbsp;", " "}, {"&amp;", "&"},   {"&lt;", {&less, 1}},
                  {"&gt;", ">"},   {"&quot;", "\""}, {"&#39;", "'"}};
  for (const auto& [entity, character] : entities)
    if (decoded.find(entity) != std::string::npos)
      decoded = replacingAll(decoded, entity, character);
  return decodeNumbers(decoded, less);
}

std::string HtmlText::withoutTags(std::string_view text) {
  return replacing(text, HtmlScanner::anyTags(text), [](std::string_view) { return ""; });
}

std::string HtmlText::labelText(std::string_view html) {
  const std::string lines =
      replacing(html, HtmlScanner::lineBreaks(html), [](std::string_view) { return "\n"; });
  return std::string(trimSpaceAndBreaks(decodeEntities(withoutTags(lines), hiddenLess)));
}

std::string HtmlText::normalizeBlankLines(std::string_view text) {
  std::string normalized;
  normalized.reserve(text.size());
  bool followsEmpty = false;
  const auto addLine = [&](std::string_view line) {
    line = trimHorizontal(line);
    if (line.empty() && followsEmpty) return;
    followsEmpty = line.empty();
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
