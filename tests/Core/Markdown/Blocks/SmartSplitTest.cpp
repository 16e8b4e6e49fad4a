#include <array>

#include "Core/Markdown/Blocks/LineRules.h"
#include "Core/Markdown/Blocks/SmartSplit.h"
#include "Support/RandomText.h"

namespace nomely {

void PrintTo(const SplitSegment& segment, std::ostream* stream) {
  *stream << static_cast<int>(segment.kind) << ' ' << segment.text;
}

namespace test {
namespace {

using Segments = std::vector<SplitSegment>;
using enum SplitSegment::Kind;

TEST(SmartSplitTest, Lines) {
  EXPECT_EQ(SmartSplit::smartSplit("[甲] 文 #乙 <span style=\"color:#FF0000\">红</span> 2026.3.5"),
            (Segments{{heading, "[甲] 文"},
                      {paragraph, "#乙 <span style=\"color: #FF0000\">红</span>"},
                      {heading, "2026.3.5"}}));
  EXPECT_EQ(SmartSplit::classifySegment("2024.5.1 晴 \n a\nb\n"),
            (SplitSegment{heading, "2024.5.1 晴\na\nb"}));
  EXPECT_EQ(SmartSplit::classifySegment("[]x"), (SplitSegment{paragraph, "[]x"}));
}

// The same by expressions alone.

Segments cutAt(const RegularExpression& expression, std::size_t leastCuts,
               const std::string& text) {
  const std::u16string whole = toUtf16(text);
  const auto found = expression.matches(whole);
  std::vector<std::u16string> raw;
  std::size_t begin = 0;
  for (const auto& match : found) {
    raw.push_back(whole.substr(begin, match.whole().begin - begin));
    begin = match.whole().end;
  }
  raw.push_back(whole.substr(begin));
  Segments pieces;
  for (const std::u16string& piece : raw)
    if (const std::string trimmed(trimSpaceAndBreaks(toUtf8(piece))); !trimmed.empty())
      pieces.push_back({paragraph, trimmed});
  if (found.size() < leastCuts) return {};
  return pieces;
}

Segments plainSplit(const std::string& text) {
  static const RegularExpression color(R"(color:\s*(#[0-9A-Fa-f]{6}))");
  static const RegularExpression marks(
      R"((?=\d{4}[.\-/]\d{1,2}[.\-/]\d{1,2}\b|(?<=\S)\s+(?=\d+[、\.]\s)|(?<=\S)\s+(?=Q\d+[：:])|(?<=\S)\s+(?=Day\d+\s)|(?<=\S)\s+(?=#\S)))");
  static const RegularExpression sentences(R"((?<=[。！？…」』）\)])(?:\s{2,}|\s+(?=[^\s])))");
  static const RegularExpression items(R"((?<=.)(?=\d+[、\.]\s))");
  static const RegularExpression date(R"(^\d{4}[.\-/]\d{1,2}[.\-/]\d{1,2})");
  static const RegularExpression day(R"(^Day\d+|^\[.+\])");
  static const RegularExpression question(R"(^Q\d+)");
  static const RegularExpression mark("color:§#");
  const std::string colored = toUtf8(color.replacingMatches(toUtf16(text), u"color:§$1"));
  Segments pieces = cutAt(marks, 0, colored);
  if (pieces.size() > 1) {
    for (SplitSegment& piece : pieces) {
      piece.text = toUtf8(mark.replacingMatches(toUtf16(piece.text), u"color: #"));
      const std::u16string units = toUtf16(piece.text);
      if (date.matchesIn(units) || day.matchesIn(units))
        piece.kind = heading;
      else if (question.matchesIn(units))
        piece.kind = bulletItem;
    }
    return pieces;
  }
  pieces = cutAt(sentences, 2, text);
  if (pieces.size() > 2) return pieces;
  if (graphemeCount(text) > 10) pieces = cutAt(items, 2, text);
  return pieces.size() > 2 ? pieces : Segments{{paragraph, text}};
}

constexpr std::string_view pieces =
    "2024.5.1¦ 3. ¦4、 ¦ Q1：¦ Day2 ¦。 ¦ ¦ ¦ ¦  ¦\u3000¦\t¦\u00A0¦\u2028¦\u0085¦\r¦\v¦\f¦"
    "2024¦1999¦12¦5¦5¦１¦٣¦.¦.¦-¦/¦、¦。¦！¦）¦)¦…¦Q¦Day¦：¦:¦#¦#¦color:¦#ff00FF¦§¦[¦]¦a¦日¦"
    "字¦😀¦e\u0301¦\u200D¦_¦[!¦note¦NOTE]¦Tip]¦\u00AD";

TEST(SmartSplitTest, CutsWhereTheExpressionsDo) {
  std::size_t cut = 0;
  onRandomTexts(pieces, 14, 10'000, [&](const std::string& text) {
    const Segments expected = plainSplit(text);
    ASSERT_EQ(SmartSplit::smartSplit(text), expected);
    if (expected.size() > 1) ++cut;
  });
  EXPECT_GT(cut, 1000U);
}

TEST(LineRulesTest, FindWhatTheExpressionsFind) {
  static const RegularExpression date(R"(^(\d{4}[.\-/]\d{1,2}[.\-/]\d{1,2})\b)");
  static const RegularExpression numbered(R"(^(\d+)\.\s(.+)$)");
  static const RegularExpression callout(
      R"((?i)^\[!(NOTE|TIP|IMPORTANT|WARNING|CAUTION)\]\s*(.*)$)");
  std::array<std::size_t, 3> found{};
  std::size_t round = 0;
  const std::vector<std::string> openings = piecesOf("¦2024.5.1¦1999-12/¦12.¦[!nOte]");
  onRandomTexts(pieces, 8, 20'000, [&](const std::string& rest) {
    const std::string text = openings[++round % openings.size()] + rest;
    const std::u16string units = toUtf16(text);
    ASSERT_EQ(LineRules::beginsWithDate(text), date.matchesIn(units));
    found[0] += LineRules::beginsWithDate(text) ? 1 : 0;
    const auto item = numbered.firstMatch(units);
    const auto ours = LineRules::numberedLine(text);
    ASSERT_EQ(ours.has_value(), item.has_value());
    if (item) {
      ++found[1];
      ASSERT_EQ(ours->number, partOf(units, item->groups[1]));
      ASSERT_EQ(ours->text, partOf(units, item->groups[2]));
    }
    const auto box = callout.firstMatch(units);
    const auto opened = LineRules::calloutLine(text);
    ASSERT_EQ(opened.has_value(), box.has_value());
    if (box) {
      ++found[2];
      ASSERT_EQ(opened->title, trimSpaceAndBreaks(partOf(units, box->groups[2])));
    }
  });
  EXPECT_THAT(found, testing::Each(testing::Gt(300U)));
}

}  // namespace
}  // namespace test
}  // namespace nomely
