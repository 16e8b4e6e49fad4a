// No text, however nested, unclosed or long, holds up what draws a memo.

#include <functional>

#include "Core/Markdown/Inline/MemoBodyKit.h"
#include "Core/Markdown/MarkdownTextView.h"
#include "Support/Proportion.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

TEST(HostileTextTest, NothingTakesLong) {
  constexpr std::string_view parts =
      "*a ¦**a ¦a** ¦a**¦*a _b __c **d ¦_¦*¦~~¦~~a ¦*_¦`¦`a¦``` ¦\\¦&¦&#¦[¦]¦![¦[a](¦![[]()¦"
      "[a](<b¦[a][¦[ (](¦[*_¦<¦<a ¦<!--¦<![CDATA[¦<?¦<!A ¦</span>¦"
      "<span style=\"color: #FF0000\">¦<span style=\"color:¦<span ¦"
      "<span style=\"font-size:1px\">¦**<span style=\"color: #FF0000\">¦@[[¦@[[a|¦@[[a|b]¦[[¦#¦"
      "# ¦#a ¦> ¦>¦- ¦1. ¦1.¦1、 ¦2024.5.1¦2024.5.1 ¦Q1：¦ Day1 ¦。 ¦。  ¦color: #ff0000 #a ¦"
      "color:¦\n¦\r¦a\n¦|¦a|b\n¦|---|\n¦> [!note] ¦> [!note] a\n¦```\n¦[Image #¦[Image #1] ¦"
      "http://¦a.com ¦a.¦://¦\x01¦日¦e\u0301¦\u0301¦👨\u200D¦\u2028¦ ¦\u3000¦\t¦a ";
  using Fill = std::function<std::string(std::size_t)>;
  std::vector<Fill> fills{
      [](auto n) { return filledWith("[", n) + filledWith("]", n); },
      [](auto n) { return filledWith("**a", n) + filledWith("a**", n); },
      [](auto n) { return filledWith("[*a", n) + filledWith("*](b)", n); },
      [](auto n) { return filledWith("> ", n) + "\n" + filledWith("> ", n); },
      [](auto n) { return "> [!note]" + filledWith(" ", n) + "\u2028a"; },
      [](auto n) { return filledWith("@[[", n) + filledWith("a", n) + "|b]c"; },
      [](auto n) { return filledWith("a|", n) + "\n---|---\n" + filledWith("a|b\n", n); },
      [](auto n) { return "[" + filledWith("*a*", n) + "](" + filledWith("b", n) + ")"; }};
  for (const std::string& part : piecesOf(parts))
    fills.push_back([part](auto n) { return filledWith(part, n); });
  for (const Fill& fill : fills) {
    SCOPED_TRACE(fill(8));
    constexpr std::size_t size = 1U << 14U;
    expectProportional(size, [&](std::size_t amount) {
      EXPECT_LE(MarkdownTextView::parseBlocks(fill(amount)).size(), 3 * amount);
    });
    expectProportional(size, [&](std::size_t amount) {
      const std::string paragraph = MarkdownTextView::preparedParagraph(fill(amount));
      (void)MarkdownTextView::inlineAttributed(paragraph, {.highlightKeyword = "a"});
    });
    expectProportional(size, [&](std::size_t amount) {
      const std::string text = fill(amount);
      (void)MemoBodyKit::collapsedPreview(text);
      EXPECT_GT(MemoBodyKit::shouldCollapse(text) ? MemoBodyKit::estimatedRenderLines(text) : 7, 6);
    });
  }
}

}  // namespace
}  // namespace nomely::test
