// No text, however nested, unclosed or long, holds up what draws a memo.

#include <ctime>
#include <functional>

#include <gtest/gtest.h>

#include "Core/Markdown/Inline/MemoBodyKit.h"
#include "Core/Markdown/MarkdownTextView.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

// Sanitizers make everything some ten times slower.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t textSize = 1 << 18;
constexpr double deadline = 6;
#else
constexpr std::size_t textSize = 1 << 20;
constexpr double deadline = 1;
#endif

double secondsOf(const std::function<void()>& work) {
  const std::clock_t start = std::clock();
  work();
  return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

TEST(HostileTextTest, NothingTakesLong) {
  constexpr std::string_view parts =
      "*a ¦**a ¦a** ¦a**¦*a _b __c **d ¦_¦*¦~~¦~~a ¦*_¦`¦`a¦``` ¦\\¦&¦&#¦[¦]¦![¦[a](¦![[]()¦"
      "[a](<b¦[a][¦[ (](¦[*_¦<¦<a ¦<!--¦<![CDATA[¦<?¦<!A ¦</span>¦"
      "<span style=\"color: #FF0000\">¦<span style=\"color:¦<span ¦"
      "<span style=\"font-size:1px\">¦**<span style=\"color: #FF0000\">¦@[[¦@[[a|¦@[[a|b]¦[[¦#¦"
      "# ¦#a ¦> ¦>¦- ¦1. ¦1.¦1、 ¦2024.5.1¦2024.5.1 ¦Q1：¦ Day1 ¦。 ¦。  ¦color: #ff0000 #a ¦"
      "color:¦\n¦\r¦a\n¦|¦a|b\n¦|---|\n¦> [!note] ¦> [!note] a\n¦```\n¦[Image #¦[Image #1] ¦"
      "http://¦a.com ¦a.¦://¦\x01¦日¦e\u0301¦\u0301¦👨\u200D¦\u2028¦ ¦\u3000¦\t¦a ";
  std::vector<std::string> texts;
  for (const std::string& part : piecesOf(parts)) texts.push_back(filledWith(part, textSize));
  const auto half = textSize / 2;
  texts.push_back(filledWith("[", half) + filledWith("]", half));
  texts.push_back(filledWith("**a", half) + filledWith("a**", half));
  texts.push_back(filledWith("[*a", half) + filledWith("*](b)", half));
  texts.push_back(filledWith("> ", half) + "\n" + filledWith("> ", half));
  texts.push_back("> [!note]" + filledWith(" ", textSize) + "\u2028a");
  texts.push_back(filledWith("@[[", half) + filledWith("a", half) + "|b]c");
  texts.push_back(filledWith("a|", half) + "\n---|---\n" + filledWith("a|b\n", half));
  texts.push_back("[" + filledWith("*a*", half) + "](" + filledWith("b", half) + ")");
  for (const std::string& text : texts) {
    SCOPED_TRACE(text.substr(0, 20) + "…" + text.substr(text.size() - 3));
    const double drawing =
        secondsOf([&] { EXPECT_LE(MarkdownTextView::parseBlocks(text).size(), text.size()); });
    const double styling = secondsOf([&] {
      const StyledText styled = MarkdownTextView::inlineAttributed(
          MarkdownTextView::preparedParagraph(text), {.highlightKeyword = "a"});
      EXPECT_LE(styled.runs.size(), styled.text.size());
    });
    const double shortening = secondsOf([&] {
      EXPECT_LE(MemoBodyKit::collapsedPreview(text).size(), text.size() + 100);
      EXPECT_GT(MemoBodyKit::shouldCollapse(text) ? MemoBodyKit::estimatedRenderLines(text) : 7, 6);
    });
    EXPECT_LT(drawing, deadline);
    EXPECT_LT(styling, deadline);
    EXPECT_LT(shortening, deadline);
  }
}

}  // namespace
}  // namespace nomely::test
