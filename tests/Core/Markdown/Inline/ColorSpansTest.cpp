#include <gtest/gtest.h>

#include "Core/Markdown/Inline/ColorSpans.h"
#include "Core/Markdown/Inline/InlineText.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

using Expression = RegularExpression;

// The matches: where each begins, the whole, its value, its content.
std::vector<Groups> plainSpans(const std::string& text, const Expression& expression) {
  return groupsOf(expression, text, {0, 1, 2});
}

// The same of what the scanner found.
template <typename ValueOf>
std::vector<Groups> shownSpans(const std::string& text, const std::vector<SpanMatch>& spans,
                               ValueOf valueOf) {
  std::vector<Groups> shown;
  for (const SpanMatch& span : spans)
    shown.push_back({std::to_string(toUtf16(text.substr(0, span.range.begin)).size()),
                     std::string(span.range.of(text)), valueOf(span.kind),
                     std::string(span.contentRange.of(text))});
  return shown;
}

const Expression& colorExpression() {
  static const Expression color(
      R"(<span\s+style=\"color:\s*(#[0-9A-Fa-f]{6})\">([\s\S]*?)</span>)");
  return color;
}

std::string plainlyNormalized(const std::string& text, const std::string& marker) {
  static const Expression bold(R"(\*\*([\s\S]+?)\*\*)");
  static const Expression italic(R"((?<!\*)\*([\s\S]+?)\*(?!\*))");
  const std::u16string units = toUtf16(text);
  std::string normalized;
  std::size_t copied = 0;
  for (const auto& match : (marker == "*" ? italic : bold).matches(units)) {
    const std::string content = partOf(units, match.groups[1]);
    if (plainSpans(content, colorExpression()).empty()) continue;
    normalized += toUtf8(units.substr(copied, match.whole().begin - copied));
    normalized += ColorSpans::normalizeColorSpans(content, marker);
    copied = match.whole().end;
  }
  return normalized + toUtf8(units.substr(copied));
}

TEST(ColorSpansTest, FindsWhatTheExpressionsFind) {
  static const Expression size(R"(<span\s+style=\"font-size:\s*([0-9]+)px\">([\s\S]*?)</span>)");
  static const Expression opening(R"(<span\s+style=\"color:\s*#[0-9A-Fa-f]{6}\">)");
  static const Expression mention(R"(@\[\[[^\]|]+\|([^\]]+)\]\])");
  constexpr std::string_view pieces =
      "<span style=\"color: #FF0000\">¦<span style=\"color:#00ff00\">¦</span>¦</span>¦"
      "<span\u3000\nstyle=\"color:\u2003#123456\">¦<span style=\"font-size:18px\">¦"
      "<span style=\"font-size: 7px\">¦<span style=\"color: #12345\">¦<span¦ ¦style=\"¦"
      "font-size:¦12¦px¦\">¦*¦*¦**¦**¦***¦日¦a¦\n¦@[[¦@[[a|¦|¦]¦]]¦b¦😀";
  std::size_t found = 0;
  onRandomTexts(pieces, 12, 20'000, [&](const std::string& text) {
    const auto colors = plainSpans(text, colorExpression());
    ASSERT_EQ(shownSpans(text, ColorSpans::colors(text),
                         [](auto& kind) { return std::get<SpanMatch::Color>(kind).hex; }),
              colors);
    const auto sizes = plainSpans(text, size);
    ASSERT_EQ(shownSpans(text, ColorSpans::sizes(text),
                         [](auto& kind) {
                           return std::to_string(std::get<SpanMatch::FontSize>(kind).px);
                         }),
              sizes);
    ASSERT_EQ(ColorSpans::openingCount(text), opening.matches(toUtf16(text)).size());
    for (const std::string marker : {"**", "*"})
      ASSERT_EQ(ColorSpans::normalizeColorSpansInsideMarkdown(text, marker),
                plainlyNormalized(text, marker));
    ASSERT_EQ(MarkdownTextView::prepared(text),
              toUtf8(mention.replacingMatches(toUtf16(text), u"**@$1**")));
    found += colors.size() + sizes.size();
  });
  EXPECT_GT(found, 2000U);
}

TEST(ColorSpansTest, Normalized) {
  const std::string span = "<span style=\"color:#FF0000\">";
  EXPECT_EQ(ColorSpans::normalizeColorSpans("a " + span + "b</span>" + span + "</span>c", "**"),
            "**a **<span style=\"color: #FF0000\">**b**</span>"
            "<span style=\"color: #FF0000\"></span>**c**");
  EXPECT_EQ(ColorSpans::normalizeColorSpans("a", "*"), "*a*");
  EXPECT_EQ(ColorSpans::normalizeColorSpans("", "*"), "");
}

}  // namespace
}  // namespace nomely::test
