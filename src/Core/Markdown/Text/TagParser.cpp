#include "Core/Markdown/Text/TagParser.h"

#include <algorithm>
#include <array>
#include <unordered_set>

#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

struct Hit {
  TextRange whole;
  TextRange tag;
};

bool isSpace(char16_t unit) {
  return isHorizontalSpace(unit) || isLineBreak(unit);
}

bool endsTag(char16_t unit) {
  constexpr std::u16string_view marks = u"#@!?.，。！？、<>";
  return marks.find(unit) != std::u16string_view::npos || isSpace(unit);
}

// What (?:^|\s)#([^\s#@!?.，。！？、<>]+) matches, several times as fast.
std::vector<Hit> tagHits(std::u16string_view masked) {
  std::vector<Hit> hits;
  for (std::size_t at = masked.find(u'#'); at != std::u16string_view::npos;
       at = masked.find(u'#', at)) {
    const std::size_t sign = at++;
    if (sign > 0 && !isSpace(masked[sign - 1])) continue;
    while (at < masked.size() && !endsTag(masked[at])) ++at;
    if (at > sign + 1) hits.push_back({{sign > 0 ? sign - 1 : 0, at}, {sign + 1, at}});
  }
  return hits;
}

// Something in which no tag is looked for, with texts that each of its matches contains.
struct Mask {
  RegularExpression expression;
  std::string_view opening;
  std::string_view closing;

  [[nodiscard]] bool mayBeIn(std::string_view text) const {
    const std::size_t begin = text.find(opening);
    return begin != std::string_view::npos &&
           text.find(closing, begin + opening.size()) != std::string_view::npos;
  }
};

const std::array<Mask, 4>& masks() {
  static const std::array<Mask, 4> all{{
      {RegularExpression("<[^>]*>"), "<", ">"},
      {RegularExpression(R"(color:\s*#[0-9A-Fa-f]{6})"), "color:", "#"},
      {RegularExpression("(?s)```.*?```"), "```", "```"},
      {RegularExpression(R"(`[^`\n]*`)"), "`", "`"},
  }};
  return all;
}

// False when no tag can begin in the text. In the masked text a "#" begins one at the start or
// after white space, so here it may also follow the end of something masked: ">", "`" or the last
// digit of a colour. Masking makes nothing but blanks, and those end a tag too.
bool mayHoldTag(std::string_view text) {
  constexpr std::string_view neverBefore = "ghijklmnopqrstuvwxyzGHIJKLMNOPQRSTUVWXYZ#*_-+=:,.!?/";
  constexpr std::string_view neverAfter = " \t\n\v\f\r#@!?.<>";
  for (std::size_t at = text.find('#'); at != std::string_view::npos; at = text.find('#', at + 1)) {
    if (at + 1 == text.size()) return false;
    if (neverAfter.find(text[at + 1]) == std::string_view::npos &&
        (at == 0 || neverBefore.find(text[at - 1]) == std::string_view::npos))
      return true;
  }
  return false;
}

// Units to be blanked, by position.
using Blanked = std::vector<bool>;

// What does not lie on the boundaries of characters is left as it is.
void mark(Blanked& blanked, const std::vector<RegularExpression::Match>& found,
          const std::vector<std::size_t>& ends) {
  const auto isBoundary = [&](std::size_t at) {
    return at == 0 || std::ranges::binary_search(ends, at);
  };
  for (const RegularExpression::Match& match : found) {
    const TextRange range = match.whole();
    if (isBoundary(range.begin) && isBoundary(range.end))
      std::fill(blanked.begin() + static_cast<std::ptrdiff_t>(range.begin),
                blanked.begin() + static_cast<std::ptrdiff_t>(range.end), true);
  }
}

std::u16string withBlanks(std::u16string_view text, const Blanked& blanked,
                          const std::vector<std::size_t>& ends) {
  std::u16string masked;
  masked.reserve(text.size());
  std::size_t begin = 0;
  for (const std::size_t end : ends) {
    const std::u16string_view character = text.substr(begin, end - begin);
    if (blanked[begin] && character != u"\n" && character != u"\r")
      masked += u' ';
    else
      masked += character;
    begin = end;
  }
  return masked;
}

std::u16string mask(std::string_view utf8, std::u16string_view text) {
  std::vector<std::size_t> ends;
  Blanked blanked;
  for (const Mask& kind : masks()) {
    if (!kind.mayBeIn(utf8)) continue;
    const std::vector<RegularExpression::Match> found = kind.expression.matches(text);
    if (found.empty()) continue;
    if (ends.empty()) {
      ends = graphemeEnds(text);
      blanked.resize(text.size());
    }
    mark(blanked, found, ends);
  }
  return ends.empty() ? std::u16string(text) : withBlanks(text, blanked, ends);
}

bool isTag(std::string_view candidate) {
  return !candidate.empty() && !candidate.starts_with('/') && !candidate.ends_with('/') &&
         candidate.find("//") == std::string_view::npos &&
         candidate.find_first_of("\"'=") == std::string_view::npos;
}

bool standsOnLineOfItsOwn(std::u16string_view text, TextRange tag) {
  for (std::size_t at = tag.begin - 1; at > 0 && !isLineBreak(text[at - 1]); --at)
    if (!isHorizontalSpace(text[at - 1])) return false;
  for (std::size_t at = tag.end; at < text.size() && !isLineBreak(text[at]); ++at)
    if (!isHorizontalSpace(text[at])) return false;
  return true;
}

bool isHeading(std::u16string_view text, TextRange range, std::string_view tag) {
  constexpr std::size_t leastCharacters = 9;
  return range.length() >= leastCharacters && tag.find('/') == std::string_view::npos &&
         standsOnLineOfItsOwn(text, range) && graphemeCount(tag) >= leastCharacters;
}

TextRange shifted(TextRange range, std::size_t by) {
  return {range.begin + by, range.end + by};
}

bool splitsCharacter(std::u16string_view text, std::size_t at) {
  const auto isLow = [](char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; };
  return at < text.size() && isLow(text[at]);
}

}  // namespace

std::vector<TagParser::Match> TagParser::matches(std::string_view text,
                                                 std::optional<TextRange> range) {
  // A range may begin in the middle of a word, so what stands before it decides nothing.
  const bool possible = range ? text.find('#') != std::string_view::npos : mayHoldTag(text);
  if (!possible) return {};
  const std::u16string masked = mask(text, toUtf16(text));
  const std::size_t begin = range ? std::min(range->begin, masked.size()) : 0;
  const std::size_t end = range ? std::clamp(range->end, begin, masked.size()) : masked.size();
  std::vector<Match> accepted;
  for (const Hit& hit : tagHits(std::u16string_view(masked).substr(begin, end - begin))) {
    const TextRange tagRange = shifted(hit.tag, begin);
    std::string tag = toUtf8(std::u16string_view(masked).substr(tagRange.begin, tagRange.length()));
    if (isTag(tag) && !isHeading(masked, tagRange, tag))
      accepted.push_back({std::move(tag), shifted(hit.whole, begin), tagRange});
  }
  return accepted;
}

std::vector<std::string> TagParser::tags(std::string_view text) {
  const std::vector<Match> all = matches(text);
  std::vector<std::string> distinct;
  std::unordered_set<std::string_view> seen;
  for (const Match& match : all)
    if (seen.insert(match.tag).second) distinct.push_back(match.tag);
  return distinct;
}

std::string TagParser::maskedForTagParsing(std::string_view text) {
  const bool possible =
      std::ranges::any_of(masks(), [&](const Mask& kind) { return kind.mayBeIn(text); });
  return possible ? toUtf8(mask(text, toUtf16(text))) : std::string(text);
}

std::string TagParser::removingInlineTags(std::string_view text) {
  if (!mayHoldTag(text)) return std::string(trimSpaceAndBreaks(text));
  const std::u16string whole = toUtf16(text);
  const std::u16string masked = mask(text, whole);
  std::u16string kept;
  std::size_t copied = 0;
  for (const auto& [cut, tag] : tagHits(masked)) {
    if (!isTag(toUtf8(std::u16string_view(masked).substr(tag.begin, tag.length()))) ||
        splitsCharacter(whole, cut.begin) || splitsCharacter(whole, cut.end))
      continue;
    kept.append(whole, copied, cut.begin - copied);
    copied = cut.end;
  }
  kept.append(whole, copied);
  return std::string(trimSpaceAndBreaks(toUtf8(kept)));
}

}  // namespace nomely
