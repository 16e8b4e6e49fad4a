#include <gmock/gmock.h>

#include "Core/Query/SearchSnippetKit.h"

namespace nomely::test {
namespace {

using SnippetRun = SearchSnippetKit::Run;

std::string repeated(const char* text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

TEST(SearchSnippetKitTest, CutsByCharacters) {
  const std::string family = "👨‍👩‍👧";
  const struct {
    std::string body;
    const char* keyword;
    std::string expected;
  } cases[] = {
      {"前天的饭", "天", "前>>>天<<<的饭"},
      {"前天的饭", "没有", "前天的饭"},
      {"", "a", ""},
      {repeated("前", 40) + "好" + repeated("后", 40), "好",
       repeated("前", 40) + ">>>好<<<" + repeated("后", 40)},
      {repeated("前", 41) + "好" + repeated("后", 41), "好",
       "..." + repeated("前", 40) + ">>>好<<<" + repeated("后", 40) + "..."},
      {repeated(family.c_str(), 41) + "好" + repeated("e\u0301", 41), "好",
       "..." + repeated(family.c_str(), 40) + ">>>好<<<" + repeated("e\u0301", 40) + "..."},
      {repeated("ß", 50) + "Straße", "STRASSE", "..." + repeated("ß", 40) + ">>>Straße<<<"},
      {"她是" + family + "吗", "👩", "她是>>>" + family + "<<<吗"},
      {"a\r\nb", "\n", "a>>>\r\n<<<b"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(SearchSnippetKit::makeSnippet(c.body, TextNeedle(c.keyword)), c.expected) << c.body;
}

TEST(SearchSnippetKitTest, RunsBetweenMarkers) {
  const std::pair<const char*, std::vector<SnippetRun>> cases[] = {
      {"", {}},
      {"无", {{"无", false}}},
      {"前>>>天<<<的", {{"前", false}, {"天", true}, {"的", false}}},
      {">>>a<<<>>>b<<<", {{"a", true}, {"b", true}}},
      {"a>>>b", {{"a>>>b", false}}},
      {"a<<<b>>>c", {{"a<<<b>>>c", false}}},
      {"<<<a>>>b<<<c", {{"<<<a", false}, {"b", true}, {"c", false}}},
      {">>><<<a", {{"a", false}}},
      {">>>a>>>b<<<", {{"a>>>b", true}}},
  };
  for (const auto& [snippet, runs] : cases)
    EXPECT_EQ(SearchSnippetKit::highlightedByMarkers(snippet), runs) << snippet;
}

TEST(SearchSnippetKitTest, TagsThatExplainAHit) {
  const struct {
    const char* query;
    std::vector<std::string> tags;
    const char* expected;
  } cases[] = {
      {"work", {"Work/计划", "生活", "homework"}, "标签命中 #Work/计划 #homework"},
      {"work", {"_work", "生活"}, "命中「work」"},
      {"#Work", {}, "命中「#Work」"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(SearchSnippetKit::tagFallbackSnippet(c.query, c.tags), c.expected);
}

}  // namespace
}  // namespace nomely::test
