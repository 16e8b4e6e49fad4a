#include "Core/Markdown/Clipboard/HtmlScanner.h"

#include "Platform/Text/Ascii.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

using HtmlScanner::Element;
using HtmlScanner::Names;

constexpr std::size_t nowhere = std::string_view::npos;

// What a letter beyond ASCII folds to where case does not count; empty for all others.
std::string_view foldedToAscii(char32_t character) {
  switch (character) {
    case 0x017F:  // long s
      return "s";
    case 0x212A:  // Kelvin sign
      return "k";
    case 0x00DF:  // sharp s
    case 0x1E9E:
      return "ss";
    case 0xFB05:  // ligatures
    case 0xFB06:
      return "st";
    default:
      return {};
  }
}

// Whether \b holds at `at`, where a letter or digit of ASCII ends.
bool isWordEnd(std::string_view text, std::size_t at) {
  return at == text.size() || !continuesWord(decodeFirst(text.substr(at)).value);
}

struct Name {
  std::size_t index = 0;
  std::size_t end = 0;
};

std::optional<Name> nameAt(std::string_view text, std::size_t at, Names names) {
  std::size_t index = 0;
  for (const std::string_view name : names) {
    const auto end = HtmlScanner::matchName(text, at, name);
    if (end && isWordEnd(text, *end)) return Name{index, *end};
    ++index;
  }
  return std::nullopt;
}

struct Span {
  std::size_t begin = 0;
  std::size_t end = 0;
};

// The first closing tag with one of the names at or after `from`, nothing between name and ">".
std::optional<Span> findClosing(std::string_view text, std::size_t from, Names names) {
  constexpr std::string_view start = "</";
  for (std::size_t at = text.find(start, from); at != nowhere; at = text.find(start, at + 1))
    for (const std::string_view name : names) {
      const auto end = HtmlScanner::matchName(text, at + start.size(), name);
      if (end && text.substr(*end).starts_with('>')) return Span{at, *end + 1};
    }
  return std::nullopt;
}

std::size_t afterSpace(std::string_view text, std::size_t at) {
  while (at < text.size()) {
    const DecodedCharacter next = decodeFirst(text.substr(at));
    if (!isHorizontalSpace(next.value) && !isLineBreak(next.value)) break;
    at += next.length;
  }
  return at;
}

// The end of name\s*=\s*["'] at `at`.
std::optional<std::size_t> attributeOpening(std::string_view text, std::size_t at,
                                            std::string_view name) {
  const auto nameEnd = HtmlScanner::matchName(text, at, name);
  if (!nameEnd) return std::nullopt;
  const std::size_t sign = afterSpace(text, *nameEnd);
  if (!text.substr(sign).starts_with('=')) return std::nullopt;
  const std::size_t quote = afterSpace(text, sign + 1);
  if (quote == text.size() || (text[quote] != '"' && text[quote] != '\'')) return std::nullopt;
  return quote + 1;
}

struct Address {
  std::size_t begin = 0;  // of the attribute
  Span value;
  std::size_t tagEnd = 0;  // where the tag ends
};

constexpr std::string_view linkName = "a";

std::size_t lastClosingTag(std::string_view text) {
  constexpr std::string_view start = "</";
  std::size_t at = text.rfind(start);
  while (at != nowhere) {
    const auto end = HtmlScanner::matchName(text, at + start.size(), linkName);
    if (end && text.substr(*end).starts_with('>')) break;
    at = at == 0 ? nowhere : text.rfind(start, at - 1);
  }
  return at;
}

// Every href that can be the one of a link, in order: with a value and, after it, the end of the
// tag and a closing tag. Each has a quotation mark of its own at either end, so no stretch is
// looked at twice.
std::vector<Address> addresses(std::string_view text) {
  std::vector<Address> found;
  const std::size_t lastClosing = lastClosingTag(text);
  if (lastClosing == nowhere) return found;
  std::size_t tagEnd = 0;
  for (std::size_t at = text.find_first_of("hH"); at != nowhere;
       at = text.find_first_of("hH", at + 1)) {
    const auto value = attributeOpening(text, at, "href");
    if (!value) continue;
    const std::size_t end = text.find_first_of("\"'", *value);
    if (end == nowhere) break;
    if (end == *value) continue;
    // Both only move on.
    if (tagEnd < end + 1) tagEnd = end + 1;
    tagEnd = text.find('>', tagEnd);
    if (tagEnd >= lastClosing) break;
    found.push_back({at, {*value, end}, tagEnd + 1});
  }
  return found;
}

bool isLanguageCharacter(std::string_view text, std::size_t at) {
  const DecodedCharacter next = decodeFirst(text.substr(at));
  if (next.length > 1) return foldedToAscii(next.value).size() == 1;
  const char letter = loweredAscii(text[at]);
  return (letter >= 'a' && letter <= 'z') || (letter >= '0' && letter <= '9') || letter == '_' ||
         letter == '+' || letter == '-';
}

std::string_view languageAt(std::string_view text, std::size_t at) {
  std::size_t end = at;
  while (end < text.size() && isLanguageCharacter(text, end))
    end += decodeFirst(text.substr(end)).length;
  return text.substr(at, end - at);
}

}  // namespace

std::optional<std::size_t> HtmlScanner::matchName(std::string_view text, std::size_t at,
                                                  std::string_view name) {
  while (!name.empty()) {
    if (at >= text.size()) return std::nullopt;
    if (static_cast<unsigned char>(text[at]) < 0x80) {
      if (loweredAscii(text[at++]) != name.front()) return std::nullopt;
      name.remove_prefix(1);
      continue;
    }
    const DecodedCharacter next = decodeFirst(text.substr(at));
    const std::string_view folded = foldedToAscii(next.value);
    if (folded.empty() || !name.starts_with(folded)) return std::nullopt;
    name.remove_prefix(folded.size());
    at += next.length;
  }
  return at;
}

std::vector<Element> HtmlScanner::elements(std::string_view text, Names names, Closing closing) {
  std::vector<Element> found;
  // Names without a closing tag in the rest of the text: they are not looked for again.
  std::vector<bool> exhausted(names.size());
  for (std::size_t at = text.find('<'); at != nowhere; at = text.find('<', at)) {
    const std::size_t begin = at++;
    const auto name = nameAt(text, begin + 1, names);
    if (!name || exhausted[name->index]) continue;
    const std::size_t tagEnd = text.find('>', name->end);
    if (tagEnd == nowhere) break;
    const auto end =
        findClosing(text, tagEnd + 1,
                    closing == Closing::sameName ? Names(names.subspan(name->index, 1)) : names);
    if (!end) {
      if (closing == Closing::anyOfTheNames) break;
      exhausted[name->index] = true;
      continue;
    }
    found.push_back({text.substr(begin, end->end - begin),
                     text.substr(tagEnd + 1, end->begin - tagEnd - 1), name->index});
    at = end->end;
  }
  return found;
}

std::vector<std::string_view> HtmlScanner::tags(std::string_view text, Names names, TagKind kind) {
  std::vector<std::string_view> found;
  for (std::size_t at = text.find('<'); at != nowhere; at = text.find('<', at)) {
    const std::size_t begin = at++;
    if (kind == TagKind::allTags && text.substr(at).starts_with('/')) ++at;
    const auto name = nameAt(text, at, names);
    if (!name) continue;
    const std::size_t end = text.find('>', name->end);
    if (end == nowhere) break;
    at = end + 1;
    found.push_back(text.substr(begin, at - begin));
  }
  return found;
}

std::vector<std::string_view> HtmlScanner::anyTags(std::string_view text) {
  std::vector<std::string_view> found;
  for (std::size_t at = text.find('<'); at != nowhere; at = text.find('<', at)) {
    const std::size_t begin = at++;
    if (text.substr(at).starts_with('>')) continue;
    const std::size_t end = text.find('>', at);
    if (end == nowhere) break;
    at = end + 1;
    found.push_back(text.substr(begin, at - begin));
  }
  return found;
}

std::vector<std::string_view> HtmlScanner::lineBreaks(std::string_view text) {
  std::vector<std::string_view> found;
  for (std::size_t at = text.find('<'); at != nowhere; at = text.find('<', at)) {
    const std::size_t begin = at++;
    const auto name = matchName(text, at, "br");
    if (!name) continue;
    std::size_t end = afterSpace(text, *name);
    if (text.substr(end).starts_with('/')) ++end;
    if (!text.substr(end).starts_with('>')) continue;
    at = end + 1;
    found.push_back(text.substr(begin, at - begin));
  }
  return found;
}

std::optional<std::size_t> HtmlScanner::closingTag(std::string_view text, std::string_view name) {
  const auto found = findClosing(text, 0, {name});
  return found ? std::optional(found->begin) : std::nullopt;
}

std::vector<HtmlScanner::Link> HtmlScanner::links(std::string_view text) {
  std::vector<Link> found;
  const std::vector<Address> all = addresses(text);
  auto next = all.begin();
  std::size_t limit = 0;
  for (std::size_t at = text.find('<'); at != nowhere; at = text.find('<', at)) {
    const std::size_t begin = at++;
    const auto name = nameAt(text, at, {linkName});
    if (!name) continue;
    // The last address before the next ">": the expression takes as much as it can before it.
    if (limit < name->end) limit = text.find('>', name->end);
    while (next != all.end() && next->begin < name->end) ++next;
    auto last = next;
    while (last != all.end() && last->begin < limit) ++last;
    if (last == next) continue;
    const Address& address = *--last;
    next = last;
    const auto end = findClosing(text, address.tagEnd, {linkName});
    if (!end) break;
    found.push_back({text.substr(begin, end->end - begin),
                     text.substr(address.value.begin, address.value.end - address.value.begin),
                     text.substr(address.tagEnd, end->begin - address.tagEnd)});
    at = end->end;
  }
  return found;
}

std::string_view HtmlScanner::codeLanguage(std::string_view text) {
  constexpr std::string_view mark = "language-";
  for (std::size_t at = text.find_first_of("cC"); at != nowhere;
       at = text.find_first_of("cC", at + 1)) {
    const auto value = attributeOpening(text, at, "class");
    if (!value) continue;
    const std::string_view names = text.substr(*value, text.find_first_of("\"'", *value) - *value);
    for (std::size_t hyphen = names.rfind('-'); hyphen != nowhere && hyphen + 1 >= mark.size();
         hyphen = names.rfind('-', hyphen - 1)) {
      if (matchName(names, hyphen + 1 - mark.size(), mark) != hyphen + 1) continue;
      const std::string_view language = languageAt(names, hyphen + 1);
      if (!language.empty()) return language;
    }
  }
  return {};
}

}  // namespace nomely
