#include <random>
#include <stdexcept>

#include <gtest/gtest.h>

#include "Platform/Text/Base64.h"
#include "Platform/Text/HostNames.h"
#include "Platform/Text/LineDiff.h"
#include "Platform/Text/RegularExpression.h"

namespace nomely::test {
namespace {

TEST(Base64Test, BothWaysAndNothingMalformed) {
  for (const auto& [bytes, text] : {std::pair("f", "Zg=="),
                                    {"foob", "Zm9vYg=="},
                                    {"\xFB\xFF\xFE", "+//+"},
                                    {"日记", "5pel6K6w"}})
    EXPECT_EQ(encodeBase64(bytes), text);
  std::string all;
  for (int value = 0; value < 1024; ++value) {
    all += static_cast<char>(value * 7);
    EXPECT_EQ(decodeBase64(encodeBase64(all)), all);
  }
  for (const char* text : {"Zg", "Zg=", "Z", "Zg=a", "=", "====", "Z===", "Zm9v====", "Zm 9",
                           "Zm9v\n", "Zm-_", "Zg==Zg==", "日"})
    EXPECT_FALSE(decodeBase64(text)) << text;
}

TEST(HostNamesTest, PublicSuffixes) {
  for (const char* host : {"example.com", "a.b.com.cn", "example.co.uk", "例子.中国",
                           "xn--fsqu00a.xn--fiqs8s", "münchen.de", "a.b.ck"})
    EXPECT_TRUE(hasPublicSuffix(host)) << host;
  for (const char* host :
       {"", "com", ".com", "localhost", "a.invalidname", "1.2.3.4", "a.", ".", "a.."})
    EXPECT_FALSE(hasPublicSuffix(host)) << host;
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

using Lines = std::vector<std::string_view>;

Lines lettersOf(std::string_view text) {
  Lines lines;
  for (std::size_t i = 0; i < text.size(); ++i) lines.push_back(text.substr(i, 1));
  return lines;
}

// A letter a line: "@0,0 a -b +x c".
std::string diffOf(std::string_view before, std::string_view after) {
  std::string text;
  for (const DiffHunk& hunk : lineDiff(lettersOf(before), lettersOf(after))) {
    text += "@" + std::to_string(hunk.firstBefore) + "," + std::to_string(hunk.firstAfter) + " ";
    for (const DiffLine& line : hunk.lines)
      text += std::string(line.kind == DiffLine::Kind::same      ? ""
                          : line.kind == DiffLine::Kind::removed ? "-"
                                                                 : "+") +
              std::string(line.text) + " ";
  }
  return text;
}

TEST(LineDiff, Hunks) {
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"", "", ""},
      {"abc", "abc", ""},
      {"", "ab", "@0,0 +a +b "},
      {"ab", "", "@0,0 -a -b "},
      {"abcabba", "cbabac", "@0,0 -a -b c -a b +a b a +c "},
      {"12345a6789", "12345b6789", "@2,2 3 4 5 -a +b 6 7 8 "},
      {"a123456b", "x123456y", "@0,0 -a +x 1 2 3 4 5 6 -b +y "},
      {"a1234567b", "1234567", "@0,0 -a 1 2 3 @5,4 5 6 7 -b "}};
  for (const auto& [before, after, diff] : cases) EXPECT_EQ(diffOf(before, after), diff) << before;
}

TEST(LineDiff, NeitherTextIsLost) {
  std::mt19937 random(1);
  const auto draw = [&](int length, int letters) {
    std::string text;
    while (length-- > 0) text += static_cast<char>('a' + random() % letters);
    return text;
  };
  for (int i = 0; i < 300; ++i) {
    // The longest pair has nothing in common and is not worth looking for more.
    const std::string before = i == 0 ? std::string(3000, 'a') : draw(i % 40, 3);
    const std::string after = i == 0 ? std::string(3000, 'b') : draw(i % 37, 3);
    const Lines old = lettersOf(before);
    const Lines now = lettersOf(after);
    std::string oldAgain;
    std::string nowAgain;
    for (const DiffHunk& hunk : lineDiff(old, now, before.size() + after.size()))
      for (const DiffLine& line : hunk.lines) {
        if (line.kind != DiffLine::Kind::added) oldAgain += line.text;
        if (line.kind != DiffLine::Kind::removed) nowAgain += line.text;
      }
    if (before == after) continue;
    EXPECT_EQ(oldAgain, before);
    EXPECT_EQ(nowAgain, after);
  }
}

}  // namespace
}  // namespace nomely::test
