#include "Core/Lifecycle/Maintenance/LegacyDay.h"

#include <algorithm>
#include <array>
#include <variant>

#include <fmt/format.h>

#include "Core/Extensions/TagUtilities.h"
#include "Core/Extensions/TextNumbers.h"
#include "Core/Markdown/Frontmatter/MemoFileParts.h"
#include "Core/Markdown/Text/TextLines.h"
#include "Platform/Text/Ascii.h"
#include "Platform/Text/LineEnds.h"
#include "Platform/Text/RegularExpression.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr std::string_view sectionMark = "## ";

// Of a pair, the text between the two: ("[a]", "[", "]") → "a".
std::optional<std::string_view> between(std::string_view text, std::string_view open,
                                        std::string_view close) {
  if (text.size() < open.size() + close.size() || !text.starts_with(open) || !text.ends_with(close))
    return std::nullopt;
  return text.substr(open.size(), text.size() - open.size() - close.size());
}

constexpr std::array<std::pair<std::string_view, std::string_view>, 4> quotes{
    {{"\"", "\""}, {"'", "'"}, {"“", "”"}, {"「", "」"}}};

std::string_view unquoted(std::string_view item) {
  for (const auto& [open, close] : quotes)
    if (const auto inside = between(item, open, close)) return *inside;
  return item;
}

// The value of a header line with that key: ("Tags : a", "tags") → "a".
std::optional<std::string_view> valueOf(std::string_view line, std::string_view key) {
  const std::size_t colon = line.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  if (loweredAscii(trimHorizontal(line.substr(0, colon))) != key) return std::nullopt;
  return trimHorizontal(line.substr(colon + 1));
}

// "- a" and "* a" → "a".
std::optional<std::string_view> blockItem(std::string_view line) {
  const std::string_view trimmed = trimHorizontal(line);
  if (trimmed.starts_with("- ") || trimmed.starts_with("* ")) return trimmed.substr(2);
  return std::nullopt;
}

std::string withoutBlankEdges(const std::vector<std::string_view>& lines) {
  const auto isText = [](std::string_view line) { return !trimSpaceAndBreaks(line).empty(); };
  const auto first = std::ranges::find_if(lines, isText);
  const auto last = std::find_if(lines.rbegin(), lines.rend(), isText).base();
  std::string text;
  for (auto line = first; line < last; ++line) {
    if (line != first) text += '\n';
    text += *line;
  }
  return text;
}

// How many lines after that one belong to the list whose bracket it opens.
std::size_t bracketLines(const std::vector<std::string_view>& lines, std::size_t at) {
  const auto closes = [](std::string_view line) { return trimHorizontal(line).ends_with(']'); };
  if (lines[at].find('[') == std::string_view::npos || closes(lines[at])) return 0;
  for (std::size_t i = at + 1; i < lines.size() && lines[i].find(':') == std::string_view::npos;
       ++i)
    if (closes(lines[i])) return i - at;
  return 0;
}

std::string joined(const std::string& first, const std::string& second) {
  return first.empty() || second.empty() ? first + second : first + "\n\n" + second;
}

// Takes tags and mood out of a header and returns the lines that say anything else.
std::vector<std::string_view> readHeader(std::string_view header, LegacyDay& day) {
  std::vector<std::string> tags;
  std::vector<std::string_view> others;
  const std::vector<std::string_view> lines = linesOf(header);
  const auto takeTags = [&](std::string_view list) {
    for (std::string& item : LegacyDay::listItems(list)) tags.push_back(std::move(item));
  };
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (const auto list = valueOf(lines[i], "tags")) {
      // Over several lines: in brackets, or an item each.
      std::string whole(*list);
      for (std::size_t more = bracketLines(lines, i); more > 0; --more)
        whole.append(" ").append(trimHorizontal(lines[++i]));
      takeTags(whole);
      while (whole.empty() && i + 1 < lines.size()) {
        const auto item = blockItem(lines[i + 1]);
        if (!item) break;
        tags.emplace_back(unquoted(trimHorizontal(*item)));
        ++i;
      }
      continue;
    }
    const auto mood = valueOf(lines[i], "mood");
    const auto number = mood ? parseDecimal(unquoted(*mood)) : std::nullopt;
    if (number && !day.mood)
      day.mood = number;
    else if (!mood || !mood->empty())
      others.push_back(lines[i]);
  }
  for (std::string& tag : tags) tag = TagUtilities::cleanTag(tag).value_or(tag);
  day.tags = TagUtilities::uniqueTags(tags);
  return others;
}

bool saysOnlyATime(std::string_view title) {
  static const RegularExpression onlyTime(R"(^\d{1,2}[:：]\d{2}$)");
  return onlyTime.matchesIn(toUtf16(title)) && LegacyDay::timeIn(title);
}

}  // namespace

std::vector<std::string> LegacyDay::listItems(std::string_view list) {
  list = trimHorizontal(list);
  if (list.starts_with('[')) list.remove_prefix(1);
  if (list.ends_with(']')) list.remove_suffix(1);
  // A quoted item, whatever is in it, or what lies between commas; blanks part items marked "#".
  static const RegularExpression item(
      R"RE(\s*("[^"]*"|'[^']*'|“[^”]*”|「[^」]*」|#[^\s,，、;；]+|[^,，、;；]+)\s*)RE");
  const std::u16string text = toUtf16(list);
  std::vector<std::string> items;
  for (const auto& match : item.matches(text)) {
    const TextRange range = match.groups[1].value();
    const std::string found = toUtf8(std::u16string_view(text).substr(range.begin, range.length()));
    items.emplace_back(unquoted(trimHorizontal(found)));
  }
  std::erase(items, "");
  return items;
}

std::optional<std::string> LegacyDay::timeIn(std::string_view title) {
  static const RegularExpression pattern(
      R"((?i)(上午|早上|凌晨|下午|傍晚|晚上|am|pm)?\s*(?<!\d)(\d{1,2})[:：](\d{2})(?!\d)(?:[:：]\d{2})?\s*(am|pm)?)");
  const std::u16string text = toUtf16(title);
  const auto match = pattern.firstMatch(text);
  if (!match) return std::nullopt;
  const auto group = [&](std::size_t number) -> std::string {
    const auto& range = match->groups[number];
    if (!range) return {};
    return loweredAscii(toUtf8(std::u16string_view(text).substr(range->begin, range->length())));
  };
  const auto half = [&](std::initializer_list<std::string_view> words) {
    return std::ranges::any_of(
        words, [&](std::string_view word) { return group(1) == word || group(4) == word; });
  };
  constexpr std::int64_t noon = 12;
  std::int64_t hour = parseDecimal(group(2)).value_or(-1);
  const std::int64_t minute = parseDecimal(group(3)).value_or(-1);
  if (half({"下午", "傍晚", "晚上", "pm"}) && hour < noon) hour += noon;
  if (half({"凌晨", "am"}) && hour == noon) hour = 0;
  constexpr std::int64_t lastHour = 23;
  constexpr std::int64_t lastMinute = 59;
  if (hour < 0 || hour > lastHour || minute < 0 || minute > lastMinute) return std::nullopt;
  return fmt::format("{:02}:{:02}", hour, minute);
}

LegacyDay LegacyDay::parse(std::string_view text) {
  LegacyDay day;
  const std::string plain = withLineFeeds(text);
  std::string_view rest = plain;
  while (!rest.empty() && rest.front() == '\n') rest.remove_prefix(1);
  std::string preamble;
  const auto parts = MemoFileParts::of(rest);
  if (const auto* found = std::get_if<MemoFileParts>(&parts)) {
    preamble = withoutBlankEdges(readHeader(found->header, day));
    rest = found->body;
  }
  std::optional<Section> section;
  std::vector<std::string_view> lines;  // of the section, or before the first
  const auto end = [&] {
    std::string body = withoutBlankEdges(lines);
    if (section)
      day.sections.push_back({section->time, std::move(body)});
    else
      preamble = joined(preamble, body);
    lines.clear();
  };
  for (const std::string_view line : linesOf(rest)) {
    const bool begins = line.starts_with(sectionMark);
    const std::string_view title = begins ? trimHorizontal(line.substr(sectionMark.size())) : "";
    if (begins) {
      end();
      section = Section{timeIn(title), {}};
    }
    if (!begins || (!title.empty() && !saysOnlyATime(title))) lines.push_back(line);
  }
  end();
  if (day.sections.empty() && (!preamble.empty() || !day.tags.empty() || day.mood))
    day.sections.push_back({});
  if (!preamble.empty()) day.sections[0].body = joined(preamble, day.sections[0].body);
  return day;
}

}  // namespace nomely
