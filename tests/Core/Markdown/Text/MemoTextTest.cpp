#include "Core/Extensions/TextStats.h"
#include "Core/Markdown/Text/MemoTextSanitizer.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

TEST(MemoTextSanitizerTest, Placeholders) {
  using enum MemoTextSanitizer::Edges;
  using MemoTextSanitizer::removingAttachmentPlaceholders;
  for (const auto& [text, kept, trimmed] :
       {std::tuple(" [a] [Image] \n", " [a] [Image] \n", "[a] [Image]"),
        {"a\n[附件 #1]", "a\n", "a"},
        {"a \uFFFCb\uFFFC\uFFFC", "a b", "a b"},
        {"[Im\uFFFCage #1]", "", ""}}) {
    EXPECT_EQ(removingAttachmentPlaceholders(text, keep), kept);
    EXPECT_EQ(removingAttachmentPlaceholders(text, trim), trimmed);
  }
  const std::string blanks(1'000'000, ' ');
  EXPECT_EQ(removingAttachmentPlaceholders(blanks + "a[File #1]" + blanks, keep), blanks + "a");
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

// Of base64 the expressions below know nothing.
TEST(MemoTextUtilitiesTest, CommentsOfEveryForm) {
  const std::string large(1'000'000, 'b');
  const std::tuple<std::string, std::optional<std::string>, std::string> cases[] = {
      {" a <!-- originals: b -->\n", {}, "a <!-- originals: b -->"},
      {"<!-- original:" + large + " -->", large, ""},
      {"<!-- original:b\u2028c -->", {}, ""},
      {"<!-- original-base64:Zg= --><!-- original:\nb\n-->", "b", ""},
      {"<!-- original-base64:/w== -->", {}, ""},
      {"<!-- original-base64:Z -->\n<!-- original-base64:Zg== -->", {}, ""},
      {"<!-- original-base64:Zg==-->\n<!-- original-base64:Zg== -->", "f", ""},
  };
  for (const auto& [text, original, stripped] : cases) {
    SCOPED_TRACE(text.substr(0, 60));
    EXPECT_EQ(MemoTextUtilities::extractOriginal(text), original);
    EXPECT_EQ(MemoTextUtilities::stripOriginalComment(text), stripped);
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
  const std::pair<std::string_view, std::size_t> cases[] = {
      {"", 0},    {"Hello, 世界 123", 3}, {"don't well-known", 2}, {"a-b-c a--b 'a' a'", 6},
      {"a1b", 2}, {"𠀀㐀龯", 3},          {"あ한é😀。", 0},         {"naïve", 2},
  };
  for (const auto& [text, expected] : cases)
    EXPECT_EQ(TextStats::meaningfulCount(text), expected) << text;
}

}  // namespace
}  // namespace nomely::test
