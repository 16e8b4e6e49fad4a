#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Core/Markdown/Text/TagParser.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

using testing::ElementsAreArray;
using Tags = std::vector<std::string>;

TEST(TagParserTest, TagsOfTexts) {
  const struct {
    const char* name;
    std::string text;
    Tags expected;
  } cases[] = {
      {"start, middle, later line", "#a b #c\n#d\u3000#e\u2028#f", {"a", "c", "d", "e", "f"}},
      {"inside a word", "a#tag 天#气", {}},
      {"repeated", "#b #a #b", {"b", "a"}},
      {"a second number sign ends it", "#a#b", {"a"}},
      {"marks that end it",
       "#a。 #b，x #c! #d? #e.x #f、 #g@x #h！ #i？ #j<x",
       {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j"}},
      {"marks that don't", "#a,b #c;d #e（f） #g-h_i", {"a,b", "c;d", "e（f）", "g-h_i"}},
      {"levels", "#a/b #/a #a/ #a//b #/", {"a/b"}},
      {"quotes and equals signs", "#a=1 #a\"b #a'b", {}},
      {"headings", "# a\n## b\n#\n#", {}},
      {"emoji and keycaps", "#😀好 #\uFE0F\u20E3", {"😀好", "\uFE0F\u20E3"}},
      {"code and markup", "`#a` <b #b> ```\n#c\n``` <i\n#d>", {}},
      {"colours", "<span style=\"color:#ff0000\">x</span> color: #ff0000 color:\n#00FF00", {}},
      {"no colours", "color: #ff000 #ff0000", {"ff000", "ff0000"}},
      {"after something masked", "<b>#a</b> `x`#b color:#ff0000#c", {"a", "b", "c"}},
      {"cut by something masked", "#a`x`b #<b>c", {"a"}},
      {"left open", "` #a\n<b #c\n``` #d", {"a", "c", "d"}},
      {"long word on a line", "#这是一个很长的标题行文字", {}},
      {"the same between blanks", "x\n\t \u3000#这是一个很长的标题行文字 \u3000\r\ny", {}},
      {"after something masked, alone", "`x` #这是一个很长的标题行文字 <br>", {}},
      {"long with text after it", "#这是一个很长的标题行文字 后面", {"这是一个很长的标题行文字"}},
      {"long with text before it", "前 #这是一个很长的标题行文字", {"这是一个很长的标题行文字"}},
      {"long with a level", "#这是一个/很长的标题行文字", {"这是一个/很长的标题行文字"}},
      {"long, then a mark", "#这是一个很长的标题行。", {"这是一个很长的标题行"}},
      {"eight characters", "#八个字的标题行吧", {"八个字的标题行吧"}},
      {"nine", "#一二三四五六七八九", {}},
      {"eight of many units",
       "#👍🏽👍🏽👍🏽👍🏽👍🏽👍🏽👍🏽👍🏽",
       {"👍🏽👍🏽👍🏽👍🏽👍🏽👍🏽👍🏽👍🏽"}},
      {"nothing", "", {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_THAT(TagParser::tags(c.text), ElementsAreArray(c.expected));
  }
}

TEST(TagParserTest, PositionsAndRanges) {
  using Match = TagParser::Match;
  const std::string text = "😀 #a\n#好b";
  EXPECT_THAT(TagParser::matches(text),
              ElementsAreArray({Match{"a", {2, 5}, {4, 5}}, Match{"好b", {5, 9}, {7, 9}}}));
  // The code is five characters of six units.
  EXPECT_THAT(TagParser::matches("`a😀b` #c"), ElementsAreArray({Match{"c", {5, 8}, {7, 8}}}));

  const struct {
    const char* name;
    TextRange range;
    std::vector<Match> expected;
  } cases[] = {
      {"the second line", {6, 9}, {{"好b", {6, 9}, {7, 9}}}},
      {"with its line feed", {5, 9}, {{"好b", {5, 9}, {7, 9}}}},
      {"cut off", {0, 8}, {{"a", {2, 5}, {4, 5}}, {"好", {5, 8}, {7, 8}}}},
      {"beyond the end", {6, 100}, {{"好b", {6, 9}, {7, 9}}}},
      {"past the end", {50, 100}, {}},
      {"upside down", {6, 2}, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_THAT(TagParser::matches(text, c.range), ElementsAreArray(c.expected));
  }
}

TEST(TagParserTest, MaskedTexts) {
  const struct {
    const char* name;
    std::string text;
    std::string expected;
  } cases[] = {
      {"nothing to mask", "a #b ` < color: red", "a #b ` < color: red"},
      {"markup", "a<b c>d</b>", "a     d    "},
      {"a blank for each character", "`好👍🏽e\u0301`.", "     ."},
      {"lines stay", "```\na\rb\n```.", "   \n \r \n   ."},
      {"but not a pair", "```\r\n```.", "       ."},
      {"inline code ends with the line", "`a\nb`", "`a\nb`"},
      {"an end that is half a character", "`a`\u0301 <b>\u0301", "`a`\u0301 <b>\u0301"},
      {"each looks at the text as it was", "`<`a>", "     "},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(TagParser::maskedForTagParsing(c.text), c.expected);
  }
}

TEST(TagParserTest, TextsWithoutTheirTags) {
  const struct {
    const char* name;
    std::string text;
    std::string expected;
  } cases[] = {
      {"none", "\u3000a b\n", "a b"},
      {"all there is", "#a #b\n#c", ""},
      {"around words", "早 #a 晚\n#b。", "早 晚。"},
      {"long heading as well", "x\n#这是一个很长的标题行文字", "x"},
      {"no tags, so they stay", "x #a=1 `#b` # c", "x #a=1 `#b` # c"},
      {"blanked is white space as well", "<b>#a</b> x", "<b</b> x"},
      {"positions of the masked text", "`😀` #tag x", "`😀g x"},
      {"half a character is not cut", "`a😀`#a", "`a😀`#a"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(TagParser::removingInlineTags(c.text), c.expected);
  }
}

// The expressions with nothing before them and one character at a time.
std::u16string plainlyMasked(const std::u16string& text) {
  std::vector<bool> blanked(text.size());
  const std::vector<std::size_t> ends = graphemeEnds(text);
  const auto isBoundary = [&](std::size_t at) {
    return at == 0 || std::ranges::find(ends, at) != ends.end();
  };
  static const RegularExpression masks[] = {
      RegularExpression("<[^>]*>"), RegularExpression(R"(color:\s*#[0-9A-Fa-f]{6})"),
      RegularExpression("(?s)```.*?```"), RegularExpression(R"(`[^`\n]*`)")};
  for (const RegularExpression& mask : masks)
    for (const auto& match : mask.matches(text))
      for (std::size_t at = match.whole().begin; at < match.whole().end; ++at)
        if (isBoundary(match.whole().begin) && isBoundary(match.whole().end)) blanked[at] = true;
  std::u16string masked;
  for (std::size_t i = 0, begin = 0; i < ends.size(); begin = ends[i++]) {
    const std::u16string character = text.substr(begin, ends[i] - begin);
    masked += !blanked[begin] || character == u"\n" || character == u"\r" ? character : u" ";
  }
  return masked;
}

std::vector<TagParser::Match> plainMatches(const std::string& text) {
  std::vector<TagParser::Match> found;
  const std::u16string masked = plainlyMasked(toUtf16(text));
  static const RegularExpression tag(R"((?:^|\s)#([^\s#@!?.，。！？、<>]+))");
  static const RegularExpression refused(R"(^/|/$|//|["'=])");
  static const RegularExpression blankStart(R"((?:^|[\n-\r\x85\u2028\u2029])[\t\p{Zs}]*$)");
  static const RegularExpression blankEnd(R"(^[\t\p{Zs}]*(?:[\n-\r\x85\u2028\u2029]|$))");
  for (const auto& hit : tag.matches(masked)) {
    const TextRange range = *hit.groups[1];
    const std::u16string name = masked.substr(range.begin, range.length());
    const bool isHeading = graphemeCount(toUtf8(name)) >= 9 && name.find(u'/') == name.npos &&
                           blankStart.matchesIn(masked.substr(0, range.begin - 1)) &&
                           blankEnd.matchesIn(masked.substr(range.end));
    if (!refused.matchesIn(name) && !isHeading) found.push_back({toUtf8(name), hit.whole(), range});
  }
  return found;
}

TEST(TagParserTest, EveryShortcutGivesWhatTheExpressionsGive) {
  std::size_t found = 0;
  onRandomTexts(
      "#¦#¦#¦#¦ ¦ ¦\n¦\r\n¦\r¦\t¦\u3000¦`¦`¦```¦```¦<¦>¦<b>¦color:¦#ff0000¦color: #0aF09c¦a¦日¦"
      "/¦=¦'¦。¦，¦.¦!¦-¦1¦😀¦e\u0301¦\u0301¦\u200D¦\u2028¦\u0085¦\v¦一二三四五六七八九¦"
      "abcdefgh",
      16, 10'000, [&](const std::string& text) {
        const auto expected = plainMatches(text);
        ASSERT_EQ(TagParser::matches(text), expected);
        ASSERT_EQ(TagParser::maskedForTagParsing(text), toUtf8(plainlyMasked(toUtf16(text))));
        found += expected.size();
      });
  EXPECT_GT(found, 1000);
}

}  // namespace
}  // namespace nomely::test
