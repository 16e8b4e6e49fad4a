#include "Core/Query/SearchSnippetKit.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

using SnippetRun = SearchSnippetKit::Run;

TEST(SearchSnippetKitTest, CutsByCharacters) {
  const std::string family = "👨‍👩‍👧";
  const std::tuple<std::string, const char*, std::string> cases[] = {
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
  for (const auto& [body, keyword, expected] : cases)
    EXPECT_EQ(SearchSnippetKit::makeSnippet(body, TextNeedle(keyword)), expected) << body;
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
  const std::tuple<const char*, std::vector<std::string>, const char*> cases[] = {
      {"work", {"Work/计划", "生活", "homework"}, "标签命中 #Work/计划 #homework"},
      {"work", {"_work", "生活"}, "命中「work」"},
      {"#Work", {}, "命中「#Work」"},
  };
  for (const auto& [query, tags, expected] : cases)
    EXPECT_EQ(SearchSnippetKit::tagFallbackSnippet(query, tags), expected);
}

}  // namespace
}  // namespace nomely::test
