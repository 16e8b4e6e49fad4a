#include <gtest/gtest.h>

#include "Core/Extensions/TextStats.h"
#include "Core/Markdown/Text/MemoTextSanitizer.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

TEST(MemoTextSanitizerTest, Placeholders) {
  using enum MemoTextSanitizer::Edges;
  const struct {
    const char* name;
    std::string text;
    std::string kept;
    std::string trimmed;
  } cases[] = {
      {"none", " [a] [Image] [image #1] \n", " [a] [Image] [image #1] \n",
       "[a] [Image] [image #1]"},
      {"broken marks", "[Image #1 [Image 1] [Image #] [图片#一]",
       "[Image #1 [Image 1] [Image #] [图片#一]", "[Image #1 [Image 1] [Image #] [图片#一]"},
      {"on a line of its own", "a\n \t[File #12] \r\nb", "a\nb", "a\nb"},
      {"on the last line", "a\n[附件 #1]", "a\n", "a"},
      {"two lines", "[Image #1]\n[Image #2]\nb", "b", "b"},
      {"two on a line", "[Image #1] [Image #2]\nb", "\nb", "b"},
      {"inside a line", "a [图片 #12] b", "ab", "ab"},
      {"no blank, wide blank, line break within", "a[图像#1]b[Attachment\u3000#2]c[File\n#3]",
       "abc", "abc"},
      {"object replacement", "a\uFFFC b\uFFFC\uFFFC", "a b", "a b"},
      {"object replacement inside a mark", "[Im\uFFFCage #1]", "", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(MemoTextSanitizer::removingAttachmentPlaceholders(c.text, keep), c.kept);
    EXPECT_EQ(MemoTextSanitizer::removingAttachmentPlaceholders(c.text, trim), c.trimmed);
  }
  const std::string blanks(1'000'000, ' ');
  EXPECT_EQ(MemoTextSanitizer::removingAttachmentPlaceholders(blanks + "a[File #1]" + blanks, keep),
            blanks + "a");
}

TEST(MemoTextSanitizerTest, RemovesWhatTheExpressionsMatch) {
  const RegularExpression onLine(
      R"((?m)^[ \t]*\[(?:Image|Attachment|File|图片|图像|附件)\s*#\d+\][ \t]*(?:\r?\n)?)");
  const RegularExpression inside(
      R"([ \t]*\[(?:Image|Attachment|File|图片|图像|附件)\s*#\d+\][ \t]*)");
  onRandomTexts(
      "[Image¦[附件¦#¦#1]¦#一]¦1¦]¦ ¦\t¦\n¦\r¦\u2028¦a¦[File #1]¦\u0085¦\v¦[图片\u3000#٣]", 12,
      20'000, [&](const std::string& text) {
        ASSERT_EQ(
            MemoTextSanitizer::removingAttachmentPlaceholders(text, MemoTextSanitizer::Edges::keep),
            toUtf8(inside.replacingMatches(onLine.replacingMatches(toUtf16(text), u""), u"")));
      });
}

TEST(MemoTextUtilitiesTest, WrittenCommentsAreReadAndStripped) {
  for (const std::string& original : {std::string("旧\n-->\n---\n"), std::string(),
                                      std::string("-"), std::string(2'000'000, 'x')}) {
    const std::string body = MemoTextUtilities::appendOriginal(original, "新的\n");
    EXPECT_TRUE(MemoTextUtilities::hasOriginalComment(body));
    EXPECT_EQ(MemoTextUtilities::stripOriginalComment(body), "新的");
    EXPECT_EQ(MemoTextUtilities::extractOriginal(body).value_or(""), original);
  }
  EXPECT_EQ(MemoTextUtilities::appendOriginal("旧", "新"),
            "新\n\n---\n<!-- original-base64:5pen -->");
}

TEST(MemoTextUtilitiesTest, EditorsKeepTheOlderText) {
  const std::string body = MemoTextUtilities::appendOriginal("旧", "新");
  EXPECT_EQ(MemoTextUtilities::textForEditing(body), "新");
  EXPECT_EQ(MemoTextUtilities::editedBody(body, "改"),
            MemoTextUtilities::appendOriginal("旧", "改"));
  EXPECT_EQ(MemoTextUtilities::editedBody(body, body), body);
  // What an editor is given and gives back is the same, whatever it says about such comments.
  for (const std::string text : {"讲 <!-- original: 的用法\n\n后文", "<!-- original:a -->b",
                                 "a\n\n---\n<!-- original-base64:Zg== -->\nb"}) {
    const std::string edited = MemoTextUtilities::editedBody(body, text);
    EXPECT_EQ(MemoTextUtilities::textForEditing(edited), text);
    EXPECT_EQ(MemoTextUtilities::editedBody(edited, "改"),
              MemoTextUtilities::appendOriginal("旧", "改"));
  }
  const std::string damaged = "新\n<!-- original-base64:%%% -->";
  EXPECT_EQ(MemoTextUtilities::textForEditing(damaged), damaged);
}

TEST(MemoTextUtilitiesTest, CommentsOfEveryForm) {
  const struct {
    const char* name;
    std::string text;
    std::optional<std::string> original;
    std::string stripped;
  } cases[] = {
      {"none", " a <!-- b -->\n", {}, "a <!-- b -->"},
      {"over lines", "a\n\n---\n<!-- original:\nb\n\nc\n-->", "b\n\nc", "a"},
      {"over lines, empty", "a\n<!-- original:\n\n-->", "", "a"},
      {"on one line", "a\n<!-- original:b c -->", "b c", "a"},
      {"on one line, long", "<!-- original:" + std::string(1'000'000, 'b') + " -->",
       std::string(1'000'000, 'b'), ""},
      {"on one line, nothing in it", "<!-- original: -->", {}, ""},
      {"on one line, broken", "<!-- original:b\u2028c -->", {}, ""},
      {"invalid base64, then lines", "<!-- original-base64:Zg= --><!-- original:\nb\n-->", "b", ""},
      {"base64 of no text", "<!-- original-base64:/w== -->", {}, ""},
      {"only the first base64 counts",
       "<!-- original-base64:Z -->\n<!-- original-base64:Zg== -->",
       {},
       ""},
      {"but one without its end doesn't",
       "<!-- original-base64:Zg==-->\n<!-- original-base64:Zg== -->", "f", ""},
      {"never closed", "a\n---\n<!-- original:b", {}, "a\n---\n<!-- original:b"},
      {"another comment", "a <!-- originals: b -->", {}, "a <!-- originals: b -->"},
      {"line feeds above the rule", "a\n\n\n---\n<!-- original:b -->c\n", "b", "ac"},
      {"no line feeds between the rule and it", "a\n---<!-- original:b -->", "b", "a\n---"},
      {"longer rule", "a\n----\n<!-- original:b -->", "b", "a\n-"},
      {"two", "a<!-- original:b -->c\n<!-- original:d -->", "b", "ac"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(MemoTextUtilities::extractOriginal(c.text), c.original);
    EXPECT_EQ(MemoTextUtilities::stripOriginalComment(c.text), c.stripped);
  }
}

TEST(MemoTextUtilitiesTest, RandomTextsAreReadAsTheExpressionsRead) {
  const RegularExpression lines(R"((?:---\n)?<!-- original:\n([\s\S]*?)\n-->)");
  const RegularExpression line("<!-- original:((?:(?!-->).)+) -->");
  const RegularExpression strip(R"(\n*(?:---\n)?<!-- original(?:-base64)?:[\s\S]*?-->)");
  constexpr std::string_view pieces =
      "<!-- original:¦<!-- original-base64:¦-->¦ -->¦\n-->¦---\n¦\n¦ ¦-¦a¦\r";
  onRandomTexts(pieces, 12, 20'000, [&](const std::string& text) {
    const std::u16string units = toUtf16(text);
    auto match = lines.firstMatch(units);
    if (!match) match = line.firstMatch(units);
    std::optional<std::string> expected;
    if (match) expected = partOf(units, match->groups[1]);
    ASSERT_EQ(MemoTextUtilities::extractOriginal(text), expected);
    ASSERT_EQ(MemoTextUtilities::stripOriginalComment(text),
              trimSpaceAndBreaks(toUtf8(strip.replacingMatches(units, u""))));
  });
}

TEST(TextStatsTest, MeaningfulCharacters) {
  const struct {
    std::string_view text;
    std::size_t expected;
  } cases[] = {
      {"", 0},    {"Hello, 世界 123", 3}, {"don't well-known", 2}, {"a-b-c a--b 'a' a'", 6},
      {"a1b", 2}, {"𠀀㐀龯", 3},          {"あ한é😀。", 0},         {"naïve", 2},
  };
  for (const auto& c : cases) EXPECT_EQ(TextStats::meaningfulCount(c.text), c.expected) << c.text;
}

}  // namespace
}  // namespace nomely::test
