#include <chrono>
#include <stdexcept>

#include <gtest/gtest.h>

#include "Platform/Text/RegularExpression.h"

namespace nomely::test {
namespace {

TEST(RegularExpressionTest, GroupsCountUtf16Units) {
  const RegularExpression expression("(😀)?(日)(x)?");
  const auto match = expression.firstMatch(u"a😀日b");
  ASSERT_TRUE(match);
  EXPECT_EQ(match->whole(), (TextRange{1, 4}));
  EXPECT_EQ(match->groups, (std::vector<std::optional<TextRange>>{TextRange{1, 4}, TextRange{1, 3},
                                                                  TextRange{3, 4}, std::nullopt}));
  EXPECT_EQ(expression.matches(u"日日 日").size(), 3);
  EXPECT_FALSE(expression.matchesIn(u"ab"));
}

TEST(RegularExpressionTest, Replacements) {
  const struct {
    const char* name;
    const char* pattern;
    std::u16string_view text;
    std::u16string_view replacement;
    std::u16string_view expected;
  } cases[] = {
      {"no match", "x", u"abc", u"y", u"abc"},
      {"group", "<(.+?)>", u"a<b>c<d>", u"[$1]", u"a[b]c[d]"},
      {"whole match", "b", u"abc", u"[$0]", u"a[b]c"},
      {"group that took no part", "(x)?b", u"ab", u"[$1]", u"a[]"},
      {"digit behind the last group", "(b)", u"abc", u"$10", u"ab0c"},
      {"group beyond the last", "(b)", u"abc", u"$2", u"a$2c"},
      {"dollar alone", "b", u"abc", u"5$ $x$", u"a5$ $x$c"},
      {"backslash stands for itself", "b", u"abc", u"\\n\\$0", u"a\\n\\bc"},
      {"replacement is not searched", "b", u"abc", u"bb", u"abbc"},
      {"empty matches", "x*", u"ab", u"-", u"-a-b-"},
      {"replaced by nothing", "b", u"abcb", u"", u"ac"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(RegularExpression(c.pattern).replacingMatches(c.text, c.replacement), c.expected);
  }
}

TEST(RegularExpressionTest, HostileTextEndsSoonAsNoMatch) {
  const struct {
    const char* name;
    const char* pattern;
    std::u16string text;
  } cases[] = {
      {"time", "^(a+)+$", std::u16string(40, u'a') + u"b"},
      {"stack", "^(?:a|b)*c", std::u16string(1'000'000, u'a') + u"c"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const RegularExpression expression(c.pattern);
    const auto began = std::chrono::steady_clock::now();
    EXPECT_FALSE(expression.matchesIn(c.text));
    EXPECT_EQ(expression.replacingMatches(c.text, u"x"), c.text);
    EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(30));
  }
}

TEST(RegularExpressionTest, PatternThatIsNotWellFormed) {
  for (const char* pattern : {"(", "[a", "a{2,1}", "(?<=a+)b", "\\"}) {
    SCOPED_TRACE(pattern);
    EXPECT_THROW(RegularExpression{pattern}, std::invalid_argument);
  }
}

}  // namespace
}  // namespace nomely::test
