#include "Core/Markdown/Editing/ListMarkers.h"

#include <algorithm>

#include "Core/Extensions/TextNumbers.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

// All white space lies in one UTF-16 unit each.
bool isSpace(char16_t unit) {
  return isHorizontalSpace(unit) || isLineBreak(unit);
}

bool startsWithPair(std::u16string_view text) {
  return text.size() > 1 && text[0] >= 0xD800 && text[0] <= 0xDBFF && text[1] >= 0xDC00 &&
         text[1] <= 0xDFFF;
}

std::size_t digitsLength(std::u16string_view line) {
  constexpr char32_t base = 0x10000;
  std::size_t at = 0;
  while (at < line.size()) {
    const bool isPair = startsWithPair(line.substr(at));
    const char32_t digit =
        isPair ? base + ((line[at] - 0xD800U) << 10U) + (line[at + 1] - 0xDC00U) : line[at];
    if (!isDecimalDigit(digit)) break;
    at += isPair ? 2 : 1;
  }
  return at;
}

bool isBlankLine(std::u16string_view line) {
  return ListMarkers::spaceLength(line) == line.size();
}

// Whether \s+(.+)$ matches at the start: white space, then something on the same line, which one
// line break may end. The more the space takes, the less is left that could break the line.
bool hasItemText(std::u16string_view rest) {
  std::size_t end = rest.size();
  if (rest.ends_with(u"\r\n"))
    end -= 2;
  else if (end > 0 && isLineBreak(rest.back()))
    --end;
  const std::size_t space = ListMarkers::spaceLength(rest);
  if (space == 0 || end < 2) return false;
  for (std::size_t at = std::min(space, end - 1); at < end; ++at)
    if (isLineBreak(rest[at])) return false;
  return true;
}

// The length of "- [ ]", "- [x]" or "- [X]" at the start; 0 when it is none.
std::size_t taskLength(std::u16string_view line) {
  for (const std::u16string_view task : {u"- [ ]", u"- [x]", u"- [X]"})
    if (line.starts_with(task)) return task.size();
  return 0;
}

bool isBullet(std::u16string_view line) {
  return line.starts_with(u'-') || line.starts_with(u'*');
}

std::u16string decimalText(std::int64_t number) {
  return toUtf16(std::to_string(number));
}

}  // namespace

std::size_t ListMarkers::spaceLength(std::u16string_view line) {
  std::size_t at = 0;
  while (at < line.size() && isSpace(line[at])) ++at;
  return at;
}

std::size_t ListMarkers::headingLength(std::u16string_view line) {
  constexpr std::size_t mostSpace = 3;
  constexpr std::size_t mostSigns = 6;
  const std::size_t begin = spaceLength(line.substr(0, mostSpace));
  std::size_t end = begin;
  while (end < line.size() && end < begin + mostSigns && line[end] == u'#') ++end;
  return end == begin ? 0 : end + spaceLength(line.substr(end));
}

std::optional<ListMarkers::Number> ListMarkers::number(std::u16string_view line) {
  const std::size_t digits = digitsLength(line);
  if (digits == 0 || !line.substr(digits).starts_with(u'.')) return std::nullopt;
  return Number{parseDecimal(toUtf8(line.substr(0, digits))), digits + 1};
}

bool ListMarkers::isEmptyItem(std::u16string_view line) {
  line.remove_prefix(spaceLength(line));
  if (const std::size_t task = taskLength(line); task > 0 && isBlankLine(line.substr(task)))
    return true;
  if (isBullet(line)) return isBlankLine(line.substr(1));
  const auto numbered = number(line);
  return numbered && isBlankLine(line.substr(numbered->length));
}

std::optional<std::u16string> ListMarkers::continuation(std::u16string_view line) {
  constexpr std::int64_t lastContinued = 99;
  const std::size_t space = spaceLength(line);
  const std::u16string indent(line.substr(0, space));
  line.remove_prefix(space);
  if (const std::size_t task = taskLength(line); task > 0 && hasItemText(line.substr(task)))
    return indent + u"- [ ] ";
  if (isBullet(line) && hasItemText(line.substr(1))) return indent + line.front() + u' ';
  const auto numbered = number(line);
  if (!numbered || !hasItemText(line.substr(numbered->length))) return std::nullopt;
  if (!numbered->value || *numbered->value < 1 || *numbered->value > lastContinued)
    return std::nullopt;
  return indent + decimalText(*numbered->value + 1) + u". ";
}

}  // namespace nomely
