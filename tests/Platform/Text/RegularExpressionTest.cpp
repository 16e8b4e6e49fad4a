#include <stdexcept>

#include <gtest/gtest.h>

#include "Platform/Text/RegularExpression.h"

namespace nomely::test {
namespace {

TEST(RegularExpressionTest, GroupsCountUtf16Units) {
  const RegularExpression expression("(😀)?(日)(x)?");
  const auto match = expression.firstMatch(u"a😀日b");
  ASSERT_TRUE(match);
  EXPECT_EQ(match->groups, (std::vector<std::optional<TextRange>>{TextRange{1, 4}, TextRange{1, 3},
                                                                  TextRange{3, 4}, std::nullopt}));
  EXPECT_EQ(expression.matches(u"日日 日").size(), 3);
  EXPECT_FALSE(expression.matchesIn(u"ab"));
}

TEST(RegularExpressionTest, Replacements) {
  const struct {
    const char* pattern;
    std::u16string_view text;
    std::u16string_view replacement;
    std::u16string_view expected;
  } cases[] = {
      {"x", u"abc", u"y", u"abc"},
      {"<(.+?)>", u"a<b>c<d>", u"[$1]", u"a[b]c[d]"},
      {"b", u"abc", u"[$0]", u"a[b]c"},
      {"(x)?b", u"ab", u"[$1]", u"a[]"},     // took no part
      {"(b)", u"abc", u"$10$2", u"ab0$2c"},  // there is one group
      {"b", u"abc", u"5$ $x$\\n\\$0", u"a5$ $x$\\n\\bc"},
      {"b", u"abcb", u"bb", u"abbcbb"},  // is not searched again
      {"x*", u"ab", u"-", u"-a-b-"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(RegularExpression(c.pattern).replacingMatches(c.text, c.replacement), c.expected)
        << c.pattern;
}

// What takes exponential time, or a stack as long as the text, is no match.
TEST(RegularExpressionTest, HostileTextEndsAsNoMatch) {
  for (const auto& [pattern, text] : {std::pair("^(a+)+$", std::u16string(40, u'a') + u"b"),
                                      {"^(?:a|b)*c", std::u16string(1'000'000, u'a') + u"c"}}) {
    SCOPED_TRACE(pattern);
    const RegularExpression expression(pattern);
    EXPECT_FALSE(expression.matchesIn(text));
    EXPECT_EQ(expression.replacingMatches(text, u"x"), text);
  }
}

TEST(RegularExpressionTest, PatternThatIsNotWellFormed) {
  for (const char* pattern : {"(", "[a", "a{2,1}", "(?<=a+)b", "\\"})
    EXPECT_THROW(RegularExpression{pattern}, std::invalid_argument) << pattern;
}

}  // namespace
}  // namespace nomely::test
