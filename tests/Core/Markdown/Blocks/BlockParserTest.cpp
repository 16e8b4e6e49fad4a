#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Core/Markdown/Blocks/BlockParser.h"

namespace nomely::test {
namespace {

using testing::ElementsAreArray;
using Shown = std::vector<std::string>;

// A block's kind and what it holds, parted by bars.
struct Show {
  std::string operator()(const markdown::Paragraph& block) const { return block.text; }
  std::string operator()(const markdown::Heading& block) const {
    return std::to_string(block.level) + "|" + block.text;
  }
  std::string operator()(const markdown::BulletItem& block) const { return block.text; }
  std::string operator()(const markdown::NumberedItem& block) const {
    return block.number + "|" + block.text;
  }
  std::string operator()(const markdown::CheckItem& block) const {
    return (block.checked ? "x|" : " |") + block.text;
  }
  std::string operator()(const markdown::Blockquote& block) const { return block.text; }
  std::string operator()(const MarkdownCallout& block) const {
    return std::string(MarkdownCallout::nameOf(block.kind)) + "|" + block.title + "|" + block.body;
  }
  std::string operator()(const markdown::CodeBlock& block) const {
    return block.language.value_or("-") + "|" + block.code;
  }
  std::string operator()(const markdown::Mermaid& block) const { return block.code; }
  std::string operator()(const MarkdownTable& block) const {
    return std::to_string(block.headers.size()) + "x" + std::to_string(block.rows.size());
  }
  std::string operator()(const markdown::HorizontalRule&) const { return ""; }
};

Shown shown(const MarkdownBlocks& blocks) {
  Shown all;
  for (const MarkdownBlock& block : blocks)
    all.push_back(std::string(kindName(block)) + "|" + std::visit(Show(), block));
  return all;
}

TEST(BlockParserTest, Blocks) {
  const std::string longLine =
      "这一行足够长，长到不会被看作一句短话，所以它会和下一行连成同一个段落而不分开来写";
  const std::string thirty = "一二三四五六七八九十一二三四五六七八九十一二三四五六七八九十";
  const struct {
    std::string text;
    Shown expected;
  } cases[] = {
      {"", {}},
      {"\n \t\n\u3000\n", {}},
      {"2024.05.01 晴\n2024.5.1\n2024-05-01\n2024/05/01",
       {"heading|2|2024.05.01 晴", "heading|2|2024.5.1", "heading|2|2024-05-01",
        "heading|2|2024/05/01"}},
      {"2024.05.1x", {"paragraph|2024.05.1x"}},
      {"# a\n\t## b \n###  c\n#### d\n#e",
       {"heading|1|a", "heading|2|b", "heading|3| c", "paragraph|#### d", "paragraph|#e"}},
      {"- - -\n***\n-*-\n--",
       {"horizontalRule|", "horizontalRule|", "horizontalRule|", "paragraph|--"}},
      {"- [ ] a\n- [x]b\n  - [X]  c\n- [y] d\n- [ ]",
       {"checkItem| |a", "checkItem|x|b", "checkItem|x|c", "bulletItem|[y] d", "bulletItem|[ ]"}},
      {"- [ ]\u0301", {"bulletItem|[ ]\u0301"}},
      {"- a\n*  b\n-c\n+ d", {"bulletItem|a", "bulletItem| b", "paragraph|-c", "paragraph|+ d"}},
      {"007. a\n２.\u3000b\n3.c\n4. ",
       {"numberedItem|007|a", "numberedItem|２|b", "paragraph|3.c", "paragraph|4."}},
      {"1. a\r\n2. b\r", {"numberedItem|1|a", "numberedItem|2|b"}},
      {"> a\n>\n >  b\n>c\n> d", {"blockquote|a\n\n b", "paragraph|>c", "blockquote|d"}},
      {">\n> a", {"paragraph|>", "blockquote|a"}},
      {"> [!WARNING] 小心\n> 内容\n>\n>再来\n\n>[!note]\n> [!FOO]\n> [!tip] a",
       {"callout|warning|小心|内容\n\n再来", "callout|note|Note|[!FOO]\n[!tip] a"}},
      {"> [!FOO]\n> a\nx [!note]", {"blockquote|[!FOO]\na", "paragraph|x [!note]"}},
      {"a\n```  c++ \n# b\n  > c\n\n ``` tail\nd",
       {"paragraph|a", "codeBlock|c++|# b\n  > c\n", "paragraph|d"}},
      {"```Mermaid\ngraph TD\n```", {"mermaid|graph TD"}},
      {"```\n```\n```x", {"codeBlock|-|"}},
      {"```\na\n2024.05.01", {"codeBlock|-|a\n2024.05.01"}},
      {"a\n|x|y|\n|---|---|\n|1|2|\nb", {"paragraph|a", "table|2x1", "paragraph|b"}},
      {"- a|b\n---|---", {"table|2x0"}},
      {"a|b\nc", {"paragraph|a|b", "paragraph|c"}},
      {thirty + "\nb\n", {"paragraph|" + thirty, "paragraph|b"}},
      {longLine + "\n" + longLine, {"paragraph|" + longLine + "\n" + longLine}},
      {thirty + "五字多。\nb", {"paragraph|" + thirty + "五字多。", "paragraph|b"}},
      {thirty + "六个字更多。。\nb", {"paragraph|" + thirty + "六个字更多。。\nb"}},
      {thirty + "一\nb", {"paragraph|" + thirty + "一\nb"}},
      {"开头 2024.5.1 中 Q1：问 12、 项 #标签 Day2 末",
       {"paragraph|开头", "heading|2|2024.5.1 中", "bulletItem|Q1：问", "paragraph|12、 项",
        "paragraph|#标签", "heading|2|Day2 末"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_THAT(shown(MarkdownTextView::parseBlocks(c.text)), ElementsAreArray(c.expected));
  }
}

TEST(BlockParserTest, DiagramsAndCleanedBodies) {
  EXPECT_THAT(MarkdownTextView::mermaidCodes("```mermaid\na\n```\nx\n```mermaid\nb"),
              testing::ElementsAre("a", "b"));
  EXPECT_THAT(shown(*MarkdownTextView::blocks("图[Image #1]\uFFFC文")),
              testing::ElementsAre("paragraph|图文"));
}

}  // namespace
}  // namespace nomely::test
