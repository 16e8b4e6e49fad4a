#include <thread>

#include <gtest/gtest.h>

#include "Core/Markdown/Blocks/MarkdownRenderCache.h"

namespace nomely::test {
namespace {

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

TEST(MarkdownRenderCacheTest, StyledTextsByColor) {
  MarkdownRenderCache cache;
  const auto styled = [](const char* text) {
    StyledText made;
    made.append(text, {});
    return std::make_shared<const StyledText>(made);
  };
  cache.storeAttributed(styled("a"), "x", "1");
  cache.storeAttributed(styled("b"), "x", "2");
  cache.storeAttributed(styled("c"), "x", "1");
  EXPECT_EQ(cache.attributed("x", "1")->text, "c");
  EXPECT_EQ(cache.attributed("x", "2")->text, "b");
  EXPECT_EQ(cache.attributed("x", "3"), nullptr);
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
