#include "Export/InlineHTML.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

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
    // Without one here there is none behind any later label either.
    const std::size_t closing = text.find(')', address + 1);
    if (closing == nowhere) break;
    const std::string_view target = std::string_view(text).substr(address, closing - address);
    replaced.append(text, copied, opening - copied);
    if (InlineHTML::isHarmful(target))
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

// The next line break in `text`, none of which any of the expressions goes beyond.
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

// The character that the entity at the start of `text` stands for, and its length there.
std::optional<DecodedCharacter> entityAt(std::string_view text) {
  constexpr struct {
    std::string_view name;
    char32_t character;
  } named[] = {{"&colon;", ':'},   {"&tab;", '\t'}, {"&newline;", '\n'}, {"&amp;", '&'},
               {"&nbsp;", 0x00A0}, {"&lpar;", '('}, {"&lowbar;", '_'}};
  for (const auto& [name, character] : named)
    if (text.starts_with(name)) return DecodedCharacter{character, name.size()};
  if (!text.starts_with("&#")) return std::nullopt;
  const bool isHex = text.substr(2).starts_with('x');
  const std::string_view digits = text.substr(isHex ? 3 : 2);
  unsigned value = 0;
  constexpr int decimal = 10;
  constexpr int hexadecimal = 16;
  const auto [stop, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value,
                                             isHex ? hexadecimal : decimal);
  if (error != std::errc()) return std::nullopt;
  auto length = static_cast<std::size_t>(stop - text.data());
  if (text.substr(length).starts_with(';')) ++length;
  return DecodedCharacter{value, length};
}

std::string lowered(std::string_view text) {
  std::string result(text);
  std::ranges::transform(result, result.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return result;
}

std::string decoded(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const auto entity = text[at] == '&' ? entityAt(text.substr(at)) : std::nullopt;
    if (entity) appendUtf8(result, entity->value);
    if (!entity) result += text[at];
    at += entity ? entity->length : 1;
  }
  return result;
}

// Whether some reader of addresses may pass over the character.
bool isPassedOver(char32_t character) {
  constexpr char32_t deleteCharacter = 0x7F;
  return character <= ' ' || (character >= deleteCharacter && character <= 0x9F) ||
         character == 0x00AD || (character >= 0x200B && character <= 0x200F) ||
         (character >= 0x202A && character <= 0x202E) ||
         (character >= 0x2060 && character <= 0x206F) || character == 0xFEFF ||
         isHorizontalSpace(character) || isLineBreak(character);
}

// `address` as the most lenient reader takes it.
std::string readLeniently(std::string_view address) {
  constexpr char32_t longS = 0x017F;
  constexpr char32_t kelvin = 0x212A;
  std::string text;
  for (std::size_t at = 0; at < address.size();) {
    const DecodedCharacter next = decodeFirst(address.substr(at));
    if (next.value == longS)
      text += 's';
    else if (next.value == kelvin)
      text += 'k';
    else if (!isPassedOver(next.value))
      text += address.substr(at, next.length);
    at += next.length;
  }
  return text;
}

}  // namespace

std::string InlineHTML::escapeText(std::string_view text) {
  return escaped(text, "&<>");
}

std::string InlineHTML::escapeAttribute(std::string_view text) {
  return escaped(text, "&<>\"");
}

bool InlineHTML::isHarmful(std::string_view address) {
  constexpr std::array<std::string_view, 6> running{"javascript", "vbscript", "livescript",
                                                    "jscript",    "mocha",    "data"};
  // Schemes that stand in front of another address.
  constexpr std::array<std::string_view, 4> leading{"view-source", "feed", "jar", "url"};
  std::string text = lowered(address);
  // Escaped once for the page, perhaps once more by who wrote it.
  for (int round = 0; round < 3 && text.find('&') != nowhere; ++round)
    text = lowered(decoded(text));
  const std::string lenient = readLeniently(text);
  std::string_view rest = lenient;
  for (;;) {
    const std::size_t colon = rest.find(':');
    if (colon == nowhere) return false;
    const std::string_view scheme = rest.substr(0, colon);
    if (std::ranges::find(running, scheme) != running.end()) return true;
    if (std::ranges::find(leading, scheme) == leading.end()) return false;
    rest.remove_prefix(colon + 1);
  }
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
