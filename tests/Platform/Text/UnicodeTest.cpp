#include <algorithm>

#include <unicode/utf.h>

#include "Support/RandomText.h"

namespace nomely::test {
namespace {

using namespace std::string_view_literals;

TEST(UnicodeTest, Utf8Validity) {
  for (const std::string_view text :
       {""sv, "a\0b"sv, "0123456789 日记 0123456789"sv, "\xC2\x80\xDF\xBF"sv,
        "\xE0\xA0\x80\xEF\xBF\xBF"sv, "\xED\x9F\xBF\xEE\x80\x80"sv,
        "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"sv})
    EXPECT_TRUE(isValidUtf8(text)) << testing::PrintToString(text);
  // Overlong, surrogates, beyond the last character, bytes that never occur, cut off, broken.
  for (const std::string_view text :
       {"\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF", "\xED\xA0\x80", "\xED\xBF\xBF",
        "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\x80", "\xC3", "\xE4\xBD", "\xF0\x9F\x98",
        "\xE4\x41\x80", "\xE4\xBD\x41", "\xF0\x9F\x98\x41", "0123456789abcdef\xFF",
        "01\xFF\x33\x34\x35\x36\x37\x38\x39"})
    EXPECT_FALSE(isValidUtf8(text)) << testing::PrintToString(text);
}

TEST(UnicodeTest, TrimmingSets) {
  const std::tuple<std::string_view, std::string_view, std::string_view> cases[] = {
      {" \t a b \t", "a b", "a b"},
      {" \t", "", ""},
      {"\u3000日记\u1680\u2000\u200A\u205F\u00A0\u202F", "日记", "日记"},
      {"\u200Ba\u200B", "\u200Ba\u200B", "\u200Ba\u200B"},  // is no blank
      {"\n \v\f\ra\r\f\v \n", "\n \v\f\ra\r\f\v \n", "a"},
      {"\u0085\u2028a\u2029 ", "\u0085\u2028a\u2029", "a"},
      {" \xE3\x80 \x80 ", "\xE3\x80 \x80", "\xE3\x80 \x80"},
      {"a😀 ", "a😀", "a😀"},
  };
  for (const auto& [text, horizontal, withBreaks] : cases) {
    SCOPED_TRACE(testing::PrintToString(text));
    EXPECT_EQ(trimHorizontal(text), horizontal);
    EXPECT_EQ(trimSpaceAndBreaks(text), withBreaks);
  }
}

TEST(UnicodeTest, Utf16AndBack) {
  EXPECT_EQ(toUtf16("a日😀"), u"a日😀");
  EXPECT_EQ(toUtf8(u"a日😀"), "a日😀");
  EXPECT_EQ(toUtf16("a\xFFz"), u"a\uFFFDz");
  EXPECT_EQ(toUtf8(std::u16string{u'a', 0xD83D, u'z'}), "a\uFFFDz");
  std::string surrogate;
  appendUtf8(surrogate, 0xD800);
  EXPECT_EQ(surrogate, "\uFFFD");
}

TEST(UnicodeTest, ClustersAndColumns) {
  const std::tuple<const char*, std::string_view, std::size_t, std::size_t, std::string_view>
      cases[] = {
          {"empty", "", 0, 0, ""},
          {"Chinese", "日记", 2, 4, "日"},
          {"full-width and half-width", "Ａｱ", 2, 3, "Ａ"},
          {"combining mark", "e\u0301a", 2, 2, "e\u0301"},
          {"skin tone", "👍🏽a", 2, 3, "👍🏽"},
          {"family joined by ZWJ", "👨\u200D👩\u200D👧a", 2, 3, "👨\u200D👩\u200D👧"},
          {"two flags", "🇨🇳🇫🇷", 2, 4, "🇨🇳"},
          {"emoji by variation selector", "❤\uFE0Fa", 2, 3, "❤\uFE0F"},
          {"keycap", "1\uFE0F\u20E3z", 2, 3, "1\uFE0F\u20E3"},
          {"CR LF is one", "\r\na", 2, 1, "\r\n"},
          {"zero width space", "\u200Bz", 2, 1, "\u200B"},
          {"Hangul of conjoining letters", "\u1112\u1161\u11ABz", 2, 3, "\u1112\u1161\u11AB"},
      };
  for (const auto& [name, text, clusters, columns, first] : cases) {
    SCOPED_TRACE(name);
    EXPECT_EQ(graphemeCount(text), clusters);
    EXPECT_EQ(displayWidth(text), columns);
    EXPECT_EQ(graphemePrefix(text, 1), first);
    EXPECT_EQ(graphemePrefix(text, 0), "");
    EXPECT_EQ(graphemePrefix(text, clusters), text);
    EXPECT_EQ(graphemePrefix(text, clusters + 5), text);
    const std::vector<std::size_t> ends = graphemeEnds(toUtf16(text));
    ASSERT_EQ(ends.size(), clusters);
    if (clusters == 0) continue;
    EXPECT_EQ(ends.front(), toUtf16(first).size());
    EXPECT_EQ(ends.back(), toUtf16(text).size());
  }
}

TEST(UnicodeTest, ClassesAreThoseOfExpressions) {
  const RegularExpression space(R"(^\s$)");
  const RegularExpression digit(R"(^\d$)");
  const RegularExpression wordEnd(R"(^a\b)");
  for (char32_t c = 1; c < 0x20000; c += c < 0x3200 || c > 0xF000 ? 1 : 16) {
    if (U_IS_SURROGATE(c)) continue;
    std::string text;
    appendUtf8(text, c);
    ASSERT_EQ(isSpaceOrBreak(c), space.matchesIn(toUtf16(text))) << std::uint32_t{c};
    ASSERT_EQ(isDecimalDigit(c), digit.matchesIn(toUtf16(text))) << std::uint32_t{c};
    ASSERT_EQ(endsWord(text), wordEnd.matchesIn(toUtf16("a" + text))) << std::uint32_t{c};
  }
}

TEST(UnicodeTest, CountsAndPrefixesByShortcut) {
  constexpr std::string_view pieces =
      "a¦日¦。¦，¦“¦…¦\u3000¦あ¦\r¦\n¦\u3099¦\u302A¦\u0301¦é"
      "¦👍¦🏽¦\u200D¦🇨¦한¦\u1100¦㊙¦ﾞ";
  onRandomTexts(pieces, 12, 5000, [](const std::string& text) {
    // Nothing is cut short there.
    std::vector<std::size_t> bytes{0};
    while (bytes.back() < text.size()) bytes.push_back(graphemesAfter(text, bytes.back(), 1));
    const std::size_t count = bytes.size() - 1;
    ASSERT_EQ(graphemeCount(text), count);
    for (std::size_t most = 0; most < 4; ++most) {
      ASSERT_EQ(graphemeCountUpTo(text, most), std::min(count, most));
      ASSERT_EQ(graphemePrefix(text, most), text.substr(0, bytes[std::min(count, most)]));
    }
    std::vector<std::size_t> ends;
    for (std::size_t i = 1; i <= count; ++i)
      ends.push_back(toUtf16(text.substr(0, bytes[i])).size());
    ASSERT_EQ(graphemeEnds(toUtf16(text)), ends);
  });
}

}  // namespace
}  // namespace nomely::test
