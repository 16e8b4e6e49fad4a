#include "Core/Markdown/Blocks/LineRules.h"

#include <algorithm>

#include "Platform/Text/Ascii.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr std::size_t leastRule = 3;

bool isAsciiDigit(char c) {
  return c >= '0' && c <= '9';
}

// Bytes of the digit at the beginning of the text, 0 for none. No script from U+2000 to U+9FFF,
// where most text of a diary lies, has digits.
std::size_t digitLength(std::string_view text) {
  if (text.empty()) return 0;
  const auto lead = static_cast<unsigned char>(text.front());
  if (lead < 0x80) return isAsciiDigit(text.front()) ? 1 : 0;
  if (lead >= 0xE2 && lead <= 0xE9) return 0;
  const DecodedCharacter first = decodeFirst(text);
  return isDecimalDigit(first.value) ? first.length : 0;
}

std::size_t digitsLength(std::string_view text, std::size_t most) {
  std::size_t end = 0;
  for (; most > 0; --most) {
    const std::size_t length = digitLength(text.substr(end));
    if (length == 0) break;
    end += length;
  }
  return end;
}

bool isDateSeparator(char c) {
  return c == '.' || c == '-' || c == '/';
}

// What (.*)$ takes of `text`: it stops at a line break, which has to be the last thing there.
std::optional<std::string_view> restOfLine(std::string_view text) {
  const std::size_t end = LineRules::lengthToLineBreak(text);
  const std::string_view rest = text.substr(end);
  if (!rest.empty() && rest != "\r\n" && decodeFirst(rest).length != rest.size())
    return std::nullopt;
  return text.substr(0, end);
}

}  // namespace

std::size_t LineRules::lengthToLineBreak(std::string_view text) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    const bool mayBreak = (byte >= 0x0A && byte <= 0x0D) || byte == 0xC2 || byte == 0xE2;
    if (mayBreak && isLineBreak(decodeFirst(text.substr(at)).value)) return at;
  }
  return text.size();
}

std::size_t LineRules::digitsLength(std::string_view text) {
  return nomely::digitsLength(text, text.size());
}

std::size_t LineRules::dateLength(std::string_view text) {
  std::size_t end = 0;
  for (int digit = 0; digit < 4; ++digit) {
    const std::size_t length = digitLength(text.substr(end));
    if (length == 0) return 0;
    end += length;
  }
  for (int part = 0; part < 2; ++part) {
    if (end == text.size() || !isDateSeparator(text[end])) return 0;
    const std::size_t length = nomely::digitsLength(text.substr(end + 1), 2);
    if (length == 0) return 0;
    end += 1 + length;
  }
  return end;
}

bool LineRules::beginsWithDate(std::string_view line) {
  const std::size_t end = dateLength(line);
  return end > 0 && endsWord(line.substr(end));
}

std::optional<LineRules::NumberedLine> LineRules::numberedLine(std::string_view line) {
  const std::size_t digits = digitsLength(line);
  if (digits == 0 || digits + 1 >= line.size() || line[digits] != '.') return std::nullopt;
  const DecodedCharacter blank = decodeFirst(line.substr(digits + 1));
  if (!isSpaceOrBreak(blank.value)) return std::nullopt;
  const auto text = restOfLine(line.substr(digits + 1 + blank.length));
  if (!text || text->empty()) return std::nullopt;
  return NumberedLine{line.substr(0, digits), *text};
}

std::optional<LineRules::CalloutLine> LineRules::calloutLine(std::string_view line) {
  using enum MarkdownCallout::Kind;
  if (!line.starts_with("[!")) return std::nullopt;
  line.remove_prefix(2);
  for (const auto kind : {note, tip, important, warning, caution}) {
    const std::string_view name = MarkdownCallout::nameOf(kind);
    if (line.size() <= name.size() || line[name.size()] != ']' ||
        !equalsIgnoringAsciiCase(line.substr(0, name.size()), name))
      continue;
    std::string_view rest = line.substr(name.size() + 1);
    while (!rest.empty() && isSpaceOrBreak(decodeFirst(rest).value))
      rest.remove_prefix(decodeFirst(rest).length);
    const auto title = restOfLine(rest);
    if (!title) return std::nullopt;
    return CalloutLine{kind, trimSpaceAndBreaks(*title)};
  }
  return std::nullopt;
}

std::optional<LineRules::CheckLine> LineRules::checkLine(std::string_view line) {
  constexpr std::string_view boxes[] = {"- [ ]", "- [x]", "- [X]"};
  constexpr std::size_t length = boxes[0].size();
  constexpr std::size_t mark = length - 2;
  const std::string_view box = line.substr(0, length);
  if (line.size() <= length || std::ranges::find(boxes, box) == std::end(boxes))
    return std::nullopt;
  // The bracket may have a mark of its own on it.
  if (graphemePrefix(line.substr(length - 1), 1).size() > 1) return std::nullopt;
  return CheckLine{box[mark] != ' ', line.substr(mark, 1), trimHorizontal(line.substr(length))};
}

bool LineRules::isRule(std::string_view line) {
  return line.size() >= leastRule && line.find_first_not_of("-* ") == std::string_view::npos;
}

bool LineRules::isDiagram(std::string_view language) {
  return equalsIgnoringAsciiCase(trimSpaceAndBreaks(language), "mermaid");
}

}  // namespace nomely
