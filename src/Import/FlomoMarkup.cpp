#include "Import/FlomoMarkup.h"

#include <algorithm>
#include <array>
#include <utility>

#include "Platform/Text/Ascii.h"
#include "Platform/Text/Replacing.h"
#include "Platform/Text/Unicode.h"

namespace nomely::FlomoMarkup {
namespace {

constexpr std::size_t nowhere = std::string_view::npos;

bool isAsciiSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

// Non-ASCII characters count as letters.
bool isWordByte(char c) {
  const char lowered = loweredAscii(c);
  return (lowered >= 'a' && lowered <= 'z') || (c >= '0' && c <= '9') || c == '_' ||
         static_cast<unsigned char>(c) >= 0x80;
}

std::size_t afterSpace(std::string_view text, std::size_t at) {
  while (at < text.size() && isAsciiSpace(text[at])) ++at;
  return at;
}

struct Stretch {
  std::size_t begin;
  std::size_t end;
};
// The value of the last `src` of which the name stands from `begin` to `end`: a page that is loaded
// bit by bit has the picture's own there. The value is not empty, and a ">" follows.
std::optional<Stretch> lastSource(std::string_view note, std::size_t begin, std::size_t end) {
  constexpr std::string_view name = "src";
  for (std::size_t at = note.substr(0, end).rfind(name); at != nowhere && at >= begin;
       at = note.substr(0, at).rfind(name)) {
    if (at == begin || isWordByte(note[at - 1])) continue;
    std::size_t value = afterSpace(note, at + name.size());
    if (!note.substr(value).starts_with('=')) continue;
    value = afterSpace(note, value + 1);
    if (value >= note.size() || (note[value] != '"' && note[value] != '\'')) continue;
    const std::size_t valueEnd = note.find_first_of("\"'", ++value);
    if (valueEnd != nowhere && valueEnd > value && note.find('>', valueEnd) != nowhere)
      return Stretch{value, valueEnd};
  }
  return std::nullopt;
}

// The first line break at or after `from`, else the end.
std::size_t lineBreakFrom(std::string_view text, std::size_t from) {
  while (from < text.size()) {
    const DecodedCharacter character = decodeFirst(text.substr(from));
    if (isLineBreak(character.value)) return from;
    from += character.length;
  }
  return text.size();
}

// Whether `markup`, which begins with "<", is the tag of that name, with or without attributes.
bool isTag(std::string_view markup, std::string_view name) {
  if (!equalsIgnoringAsciiCase(markup.substr(1, name.size()), name)) return false;
  const std::size_t end = 1 + name.size();
  return end < markup.size() &&
         (isAsciiSpace(markup[end]) || markup[end] == '>' || markup[end] == '/');
}

bool isBlockTag(std::string_view markup) {
  constexpr std::array<std::string_view, 31> names{
      "br",         "p",      "div",   "li",     "ul",     "ol",      "h1",     "h2",
      "h3",         "h4",     "h5",    "h6",     "tr",     "td",      "th",     "table",
      "thead",      "tbody",  "tfoot", "hr",     "dl",     "dt",      "dd",     "pre",
      "blockquote", "figure", "main",  "header", "footer", "section", "article"};
  std::string name;
  for (std::size_t i = markup.starts_with("</") ? 2 : 1;
       i < markup.size() && !isAsciiSpace(markup[i]) && markup[i] != '/' && markup[i] != '>'; ++i)
    name += loweredAscii(markup[i]);
  return std::ranges::find(names, name) != names.end();
}

std::string decoded(std::string_view text) {
  // In this order: "&amp;lt;" becomes "<", as in every export that was ever read here.
  constexpr std::array<std::pair<std::string_view, std::string_view>, 13> entities{{
      {"&amp;", "&"},
      {"&lt;", "<"},
      {"&gt;", ">"},
      {"&quot;", "\""},
      {"&#39;", "'"},
      {"&nbsp;", " "},
      {"&hellip;", "..."},
      {"&mdash;", "—"},
      {"&ndash;", "–"},
      {"&lsquo;", "'"},
      {"&rsquo;", "'"},
      {"&ldquo;", "\""},
      {"&rdquo;", "\""},
  }};
  std::string result(text);
  for (const auto& [entity, character] : entities)
    if (result.find(entity) != std::string::npos) result = replacingAll(result, entity, character);
  return result;
}

std::optional<std::string> clockTime(std::string_view text) {
  const auto digits = [&](std::size_t at, char highestTens) {
    return text[at] >= '0' && text[at] <= highestTens && text[at + 1] >= '0' && text[at + 1] <= '9';
  };
  if (text.size() != 5 && text.size() != 8) return std::nullopt;
  if (!digits(0, '2') || text.substr(0, 2) > "23" || text[2] != ':' || !digits(3, '5'))
    return std::nullopt;
  if (text.size() == 8 && (text[5] != ':' || !digits(6, '5'))) return std::nullopt;
  return std::string(text.substr(0, 5));
}

}  // namespace

std::optional<Moment> parseTime(std::string_view text) {
  text = trimSpaceAndBreaks(text);
  constexpr std::size_t dateLength = std::string_view("2026-03-05").size();
  std::string date(text.substr(0, dateLength));
  if (date.size() == dateLength && date[4] == '/' && date[7] == '/') date[4] = date[7] = '-';
  const auto day = Day::parse(date);
  if (!day) return std::nullopt;
  if (text.size() == dateLength) return Moment{*day, "00:00"};
  if (text[dateLength] != ' ') return std::nullopt;
  const auto time = clockTime(text.substr(dateLength + 1));
  return time ? std::optional(Moment{*day, *time}) : std::nullopt;
}

std::optional<std::string_view> timeOf(std::string_view note) {
  constexpr std::string_view begins = "<div class=\"time\">";
  std::size_t at = note.find(begins);
  while (at != nowhere) {
    const std::size_t text = at + begins.size();
    const std::size_t end = note.find("</div>", text);
    if (end == nowhere) return std::nullopt;
    const std::size_t lineBreak = lineBreakFrom(note.substr(0, end), text);
    if (lineBreak == end) return note.substr(text, end - text);
    at = note.find(begins, lineBreak);
  }
  return std::nullopt;
}

std::optional<std::string_view> contentOf(std::string_view note) {
  constexpr std::string_view begins = "<div class=\"content\">";
  const std::size_t begin = note.find(begins);
  if (begin == nowhere) return std::nullopt;
  const std::string_view rest = note.substr(begin + begins.size());
  std::size_t lastClosed = nowhere;
  int depth = 1;
  for (std::size_t at = rest.find('<'); at != nowhere; at = rest.find('<', at + 1)) {
    const std::string_view markup = rest.substr(at);
    if (isTag(markup, "div")) ++depth;
    if (!isTag(markup, "/div")) continue;
    lastClosed = at;
    if (--depth == 0) break;
  }
  // More opened than closed: nothing of the note is left out for that.
  return lastClosed == nowhere ? std::nullopt : std::optional(rest.substr(0, lastClosed));
}

// What `<(?:img|audio)\b[^>]*\bsrc\s*=\s*["']([^"']+)["'][^>]*>` captures.
std::vector<std::string> mediaOf(std::string_view note) {
  std::vector<std::string> found;
  for (std::size_t at = note.find('<'); at != nowhere; at = note.find('<', at + 1)) {
    const std::string_view markup = note.substr(at);
    const std::size_t name = markup.starts_with("<img") ? 4 : markup.starts_with("<audio") ? 6 : 0;
    if (name == 0 || (name < markup.size() && isWordByte(markup[name]))) continue;
    const std::size_t end = note.find('>', at + name);
    if (end == nowhere) break;
    const auto source = lastSource(note, at + name, end);
    if (source) found.push_back(decoded(note.substr(source->begin, source->end - source->begin)));
    at = source ? note.find('>', source->end) : end;
  }
  return found;
}

std::vector<std::string> linkedTagsOf(std::string_view content) {
  std::vector<std::string> tags;
  std::size_t lineBreak = 0;
  for (std::size_t at = content.find("<a"); at != nowhere; at = content.find("<a", at)) {
    const std::size_t end = content.find('>', at);
    if (end == nowhere) break;
    const bool isTag = content.substr(at, end - at).find("class=\"tag\"") != nowhere;
    at = end;
    if (!isTag || !content.substr(end + 1).starts_with('#')) continue;
    const std::size_t text = end + 2;
    const std::size_t closed = content.find("</a>", text);
    if (closed == nowhere) break;
    if (lineBreak < text) lineBreak = lineBreakFrom(content, text);
    if (lineBreak < closed) continue;
    const std::string tag = textOf(content.substr(text, closed - text));
    tags.emplace_back(trimSpaceAndBreaks(std::string_view(tag).substr(0, tag.find('\n'))));
    at = closed;
  }
  std::erase(tags, "");
  return tags;
}

std::string textOf(std::string_view content) {
  std::string text;
  bool isAfterBlock = false;
  for (std::size_t at = 0; at < content.size();) {
    const std::size_t end = content[at] == '<' ? content.find('>', at + 1) : nowhere;
    if (end != nowhere && end > at + 1) {
      isAfterBlock = isAfterBlock || isBlockTag(content.substr(at, end - at + 1));
      at = end + 1;
      continue;
    }
    // Up to the next markup. Without any ">" to come there is none.
    const bool isLast = content[at] == '<' && end == nowhere;
    const std::size_t next =
        isLast ? content.size() : std::min(content.find('<', at + 1), content.size());
    const std::string_view piece = content.substr(at, next - at);
    if (std::exchange(isAfterBlock, false) && !text.empty() && !isAsciiSpace(text.back()) &&
        !isAsciiSpace(piece.front()))
      text += '\n';
    text += piece;
    at = next;
  }
  return decoded(text);
}

std::vector<std::string> tagsIn(std::string_view text) {
  std::vector<std::string> tags;
  for (std::size_t at = text.find('#'); at != nowhere; at = text.find('#', at)) {
    // "&#8217;" is a character that was not decoded.
    const bool isReference = at > 0 && text[at - 1] == '&';
    const std::size_t begin = ++at;
    while (at < text.size() && text[at] != '#' && text[at] != ',' && text[at] != '<') {
      const DecodedCharacter character = decodeFirst(text.substr(at));
      if (isSpaceOrBreak(character.value)) break;
      at += character.length;
    }
    if (at > begin && !isReference) tags.emplace_back(text.substr(begin, at - begin));
  }
  return tags;
}

}  // namespace nomely::FlomoMarkup
