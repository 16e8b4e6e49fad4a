#include "Core/Markdown/Text/LinkScheme.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string>

#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr auto npos = std::string_view::npos;
constexpr std::size_t longestScheme = 64;

bool isHidden(char32_t character) {
  return character <= ' ' || (character >= 0x7F && character <= 0x9F) || character == 0xAD ||
         (character >= 0x200B && character <= 0x200F) ||
         (character >= 0x2028 && character <= 0x202E) ||
         (character >= 0x2060 && character <= 0x206F) || character == 0xFEFF ||
         character == 0xFFFD || isSpaceOrBreak(character);
}

// The character that "&#106;", "&#x6a", "&colon;" and the like stand for, and their length; a plain
// ampersand for anything else.
DecodedCharacter referenceAt(std::string_view text) {
  struct Named {
    std::string_view name;
    char32_t value;
  };
  constexpr std::array<Named, 4> named{
      {{"&amp;", '&'}, {"&colon;", ':'}, {"&Tab;", '\t'}, {"&NewLine;", '\n'}}};
  for (const auto& [name, value] : named)
    if (text.starts_with(name)) return {value, name.size()};
  if (!text.starts_with("&#")) return {'&', 1};
  const bool isHexadecimal = text.size() > 2 && (text[2] | 0x20) == 'x';
  const char* const begin = text.data() + (isHexadecimal ? 3 : 2);
  std::uint32_t value = 0;
  const auto [end, error] =
      std::from_chars(begin, text.data() + text.size(), value, isHexadecimal ? 16 : 10);
  if (end == begin || error != std::errc()) return {'&', 1};
  const auto length = static_cast<std::size_t>(end - text.data());
  return {value, length + (text.substr(length).starts_with(';') ? 1 : 0)};
}

std::string withoutReferences(std::string_view text) {
  std::string plain;
  plain.reserve(text.size());
  while (!text.empty()) {
    const DecodedCharacter next =
        text.front() == '&' ? referenceAt(text)
                            : DecodedCharacter{static_cast<unsigned char>(text.front()), 1};
    if (text.front() == '&')
      appendUtf8(plain, next.value);
    else
      plain += text.front();
    text.remove_prefix(next.length);
  }
  return plain;
}

// Takes the scheme and its colon off `url` and returns it in lower case, without what is hidden in
// it; empty when there is none.
std::string takeScheme(std::string_view& url) {
  std::string scheme;
  std::string_view rest = url;
  while (!rest.empty() && scheme.size() < longestScheme) {
    const DecodedCharacter next = decodeFirst(rest);
    rest.remove_prefix(next.length);
    if (next.value == ':') {
      url = rest;
      return scheme;
    }
    if (isHidden(next.value)) continue;
    const bool isAllowed =
        next.value < 0x80 && std::string_view("+-.").find(static_cast<char>(next.value)) != npos;
    if (!isAllowed && !isLetterOrNumber(next.value)) break;
    appendUtf8(scheme, foldedCase(next.value));
  }
  return {};
}

}  // namespace

bool mayBeLinked(std::string_view url) {
  constexpr std::array<std::string_view, 11> refused{
      "blob",       "data",  "ecmascript", "filesystem", "javascript", "jscript",
      "livescript", "mhtml", "mocha",      "vbscript",   "view-source"};
  // Schemes that are followed by another address: "feed:https://a".
  constexpr std::array<std::string_view, 3> leading{"feed", "jar", "url"};
  // Written with references by an author, and escaped again for a page.
  constexpr int mostRounds = 3;
  std::string plain;
  for (int round = 0; round < mostRounds && url.find('&') != npos; ++round) {
    plain = withoutReferences(url);
    url = plain;
  }
  for (;;) {
    const std::string scheme = takeScheme(url);
    if (std::ranges::find(leading, scheme) == leading.end())
      return std::ranges::find(refused, scheme) == refused.end();
  }
}

}  // namespace nomely
