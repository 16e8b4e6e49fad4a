#include <thread>

#include "Core/Markdown/Blocks/BlockParser.h"
#include "Core/Markdown/Blocks/CheckMarks.h"
#include "Core/Markdown/Blocks/MarkdownRenderCache.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"
#include "Support/Matchers.h"

namespace nomely::test {
namespace {

using Shown = std::vector<std::string>;

// What a block holds, parted by bars.
template <typename Block>
std::string contentsOf(const Block& block) {
  if constexpr (requires { block.level; })
    return std::to_string(block.level) + "|" + block.text;
  else if constexpr (requires { block.number; })
    return block.number + "|" + block.text;
  else if constexpr (requires { block.checked; })
    return (block.checked ? "x|" : " |") + block.text;
  else if constexpr (requires { block.title; })
    return std::string(MarkdownCallout::nameOf(block.kind)) + "|" + block.title + "|" + block.body;
  else if constexpr (requires { block.language; })
    return block.language.value_or("-") + "|" + block.code;
  else if constexpr (requires { block.code; })
    return block.code;
  else if constexpr (requires { block.headers; })
    return std::to_string(block.headers.size()) + "x" + std::to_string(block.rows.size());
  else if constexpr (requires { block.text; })
    return block.text;
  else
    return "";
}

Shown shown(const MarkdownBlocks& blocks) {
  Shown all;
  for (const MarkdownBlock& block : blocks)
    all.push_back(std::string(kindName(block)) + "|" +
                  std::visit([](const auto& each) { return contentsOf(each); }, block));
  return all;
}

TEST(BlockParserTest, Blocks) {
  const std::string longLine =
      "这一行足够长，长到不会被看作一句短话，所以它会和下一行连成同一个段落而不分开来写";
  const std::string thirty = "一二三四五六七八九十一二三四五六七八九十一二三四五六七八九十";
  const std::pair<std::string, Shown> cases[] = {
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
      {"*  b\n-c\n+ d", {"bulletItem| b", "paragraph|-c", "paragraph|+ d"}},
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
      {"```\n```\n```x", {"codeBlock|-|"}},
      {"```\na\n2024.05.01", {"codeBlock|-|a\n2024.05.01"}},
      {"a\n|x|y|\n|---|---|\n|1|2|\nb", {"paragraph|a", "table|2x1", "paragraph|b"}},
      {"- a|b\n---|---", {"table|2x0"}},
      {thirty + "\nb\n", {"paragraph|" + thirty, "paragraph|b"}},
      {longLine + "\n" + longLine, {"paragraph|" + longLine + "\n" + longLine}},
      {thirty + "五字多。\nb", {"paragraph|" + thirty + "五字多。", "paragraph|b"}},
      {thirty + "六个字更多。。\nb", {"paragraph|" + thirty + "六个字更多。。\nb"}},
      {thirty + "一\nb", {"paragraph|" + thirty + "一\nb"}},
      {"开头 2024.5.1 中 Q1：问 12、 项 #标签 Day2 末",
       {"paragraph|开头", "heading|2|2024.5.1 中", "bulletItem|Q1：问", "paragraph|12、 项",
        "paragraph|#标签", "heading|2|Day2 末"}},
  };
  for (const auto& [text, expected] : cases)
    EXPECT_THAT(shown(MarkdownTextView::parseBlocks(text)), ElementsAreArray(expected)) << text;
}

// Each item of what a card shows, ticked: that item is another, and nothing else.
TEST(CheckMarksTest, TickedWhereTheyAreShown) {
  const auto shownOf = [](const std::string& body) {
    return *MarkdownTextView::blocks(MemoTextUtilities::stripOriginalComment(body));
  };
  const std::string kept = MemoTextUtilities::appendOriginal("- [ ] old", "");
  const std::pair<std::string, std::size_t> cases[] = {
      {"- [ ] a\n  - [X] b\n", 2},
      {"\n \n[Image #1]\n\uFFFC[附件 #2]\n图\n- [ ] a" + kept, 1},
      {"| a | b |\n|---|---|\n| - [ ] c | d |\n```\n- [ ] e\n```\n- [x] f [File #3]\n- [ ]f", 2},
  };
  for (const auto& [body, count] : cases) {
    std::size_t ticked = 0;
    MarkdownBlocks blocks = shownOf(body);
    for (MarkdownBlock& block : blocks) {
      auto* const item = std::get_if<markdown::CheckItem>(&block);
      if (item == nullptr) continue;
      const std::string changed = CheckMarks::toggled(body, item->line).value_or("");
      item->checked = !item->checked;
      EXPECT_EQ(shownOf(changed), blocks) << body;
      EXPECT_EQ(changed.size(), body.size());
      item->checked = !item->checked;
      ++ticked;
    }
    EXPECT_EQ(ticked, count) << body;
  }
  for (const auto& [body, line] : std::initializer_list<std::pair<std::string, std::size_t>>{
           {"- [ ]\na", 0}, {"a", 7}, {"a<!-- original:x -->\n- [ ] b", 1}})
    EXPECT_EQ(CheckMarks::toggled(body, line), std::nullopt) << body;
}

TEST(BlockParserTest, DiagramsAndCleanedBodies) {
  EXPECT_THAT(MarkdownTextView::mermaidCodes("```mermaid\na\n```\nx\n```mermaid\nb"),
              ElementsAre("a", "b"));
  EXPECT_THAT(shown(*MarkdownTextView::blocks("图[Image #1]\uFFFC文")),
              ElementsAre("paragraph|图文"));
}

MarkdownBlocks blocksOf(const std::string& text) {
  return {markdown::Paragraph{text}};
}

TEST(MarkdownRenderCacheTest, WhatWasNotUsedForLongestGoes) {
  MarkdownRenderCache cache;
  int built = 0;
  const auto use = [&](std::size_t number) {
    const std::string text = std::to_string(number);
    const auto found = cache.blocks(text, [&] {
      ++built;
      return blocksOf(text);
    });
    EXPECT_EQ(std::get<markdown::Paragraph>(found->front()).text, text);
  };
  constexpr std::size_t most = MarkdownRenderCache::maxBlockEntries;
  for (std::size_t i = 0; i < most; ++i) use(i);
  use(0);
  EXPECT_EQ(built, most) << "the first was still there";
  use(most);
  use(0);
  EXPECT_EQ(built, most + 1) << "it was used, so the second went";
  use(1);
  EXPECT_EQ(built, most + 2);
}

// Building runs without the lock, so it may use the cache itself; the later of two is kept.
TEST(MarkdownRenderCacheTest, TheLaterStoreWins) {
  MarkdownRenderCache cache;
  const auto outer = cache.blocks("x", [&] {
    EXPECT_EQ(cache.blocks("x", [] { return blocksOf("inner"); })->size(), 1U);
    return blocksOf("outer");
  });
  EXPECT_EQ(cache.blocks("x", [] { return blocksOf("never"); }), outer);
}

TEST(MarkdownRenderCacheTest, SeveralThreads) {
  MarkdownRenderCache cache;
  std::vector<std::thread> threads;
  for (std::size_t thread = 0; thread < 4; ++thread)
    threads.emplace_back([&cache, thread] {
      for (std::size_t i = 0; i < 3000; ++i) {
        const std::string text = std::to_string((i * (thread + 1)) % 300);
        const auto found = cache.blocks(text, [&] { return blocksOf(text); });
        EXPECT_EQ(*found, blocksOf(text));
      }
    });
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace nomely::test
