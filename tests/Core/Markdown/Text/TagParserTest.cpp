#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Core/Markdown/Text/TagParser.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

using testing::ElementsAreArray;
using Tags = std::vector<std::string>;

// Rules of which the expressions below know nothing, and what people write.
TEST(TagParserTest, TagsOfTexts) {
  for (const auto& [text, expected] :
       {std::pair("#a b #c\n#d\u3000#e 天#气", Tags{"a", "c", "d", "e"}),
        {"#b #a #b", {"b", "a"}},
        {"#a。 #b，x #c、 #d,e #f（g） #h-i_j", {"a", "b", "c", "d,e", "f（g）", "h-i_j"}},
        {"#a/b #/a #a/ #a//b #/ #a=1 # a\n## b", {"a/b"}},
        {"`#a` <b #b> ```\n#c\n``` color: #ff0000 ` #d", {"d"}},
        {"#😀好 #\uFE0F\u20E3", {"😀好", "\uFE0F\u20E3"}},
        {"#这是一个很长的标题行文字\n#八个字的标题行吧", {"八个字的标题行吧"}},
        {"#👍🏽👍🏽👍🏽👍🏽👍🏽👍🏽👍🏽👍🏽",
         {"👍🏽👍🏽👍🏽👍🏽👍🏽👍🏽👍🏽👍🏽"}}}) {
    SCOPED_TRACE(text);
    EXPECT_THAT(TagParser::tags(text), ElementsAreArray(expected));
  }
}

TEST(TagParserTest, PositionsAndRanges) {
  using Matches = std::vector<TagParser::Match>;
  const std::string text = "😀 #a\n#好b";
  // The code is five characters of six units.
  EXPECT_EQ(TagParser::matches("`a😀b` #c"), (Matches{{"c", {5, 8}, {7, 8}}}));
  for (const auto& [range, expected] :
       {std::pair(TextRange{6, 100}, Matches{{"好b", {6, 9}, {7, 9}}}),
        {{5, 9}, {{"好b", {5, 9}, {7, 9}}}},
        {{0, 8}, {{"a", {2, 5}, {4, 5}}, {"好", {5, 8}, {7, 8}}}},
        {{50, 100}, {}},
        {{6, 2}, {}}})
    EXPECT_EQ(TagParser::matches(text, range), expected);
}

TEST(TagParserTest, TextsWithoutTheirTags) {
  for (const auto& [text, expected] :
       rowsOf<2>("\u3000a b\n¦a b¦#a #b\n#c¦¦早 #a 晚\n#b。¦早 晚。¦x\n#这是一个很长的标题行文字¦x¦"
                 "x #a=1 `#b` # c¦x #a=1 `#b` # c¦<b>#a</b> x¦<b</b> x¦`😀` #tag x¦`😀g x¦"
                 "`a😀`#a¦`a😀`#a"))
    EXPECT_EQ(TagParser::removingInlineTags(text), expected);
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
