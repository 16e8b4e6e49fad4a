#include <numeric>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Core/Markdown/Tables/MarkdownTableLayout.h"
#include "Core/Markdown/Tables/MarkdownTableParser.h"

namespace nomely::test {
namespace {

using Rows = std::vector<std::vector<std::string>>;
using Lines = std::vector<std::string_view>;

TEST(MarkdownTableParserTest, Tables) {
  const struct {
    Lines lines;
    Rows expected;  // headers first
    std::size_t nextIndex;
  } cases[] = {
      {{"|a|b|", "|---|---|"}, {{"a", "b"}}, 2},
      {{"a|b", "---|---", "1|2"}, {{"a", "b"}, {"1", "2"}}, 3},
      {{" \t| a |\u3000b\u3000| ", "| :-: | --: |", " |1 | 2| "}, {{"a", "b"}, {"1", "2"}}, 3},
      {{"|a||", "|---|---|"}, {{"a", ""}}, 2},
      {{"a|b|c", "---|---", "1|2|3|4", "1|2", "|1|"},
       {{"a", "b", "c"}, {"1", "2", "3"}, {"1", "2", ""}},
       4},
      {{"a\\|b", "---|---"}, {{"a\\", "b"}}, 2},
      {{"||", "---|---"}, {}, 0},
      {{"a|b", "---|---", "|||"}, {{"a", "b"}, {"", ""}}, 3},
      {{"a|b", "---|---", "", "1|2"}, {{"a", "b"}}, 2},
      {{"a|b", "---|---", "---|---"}, {{"a", "b"}, {"---", "---"}}, 3},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.lines));
    Lines lines{"before|it"};
    lines.insert(lines.end(), c.lines.begin(), c.lines.end());
    const auto result = MarkdownTableParser::parse(lines, 1);
    ASSERT_EQ(result.has_value(), !c.expected.empty());
    if (!result) continue;
    Rows rows = result->table.rows;
    rows.insert(rows.begin(), result->table.headers);
    EXPECT_EQ(rows, c.expected);
    EXPECT_EQ(result->nextIndex, c.nextIndex + 1);
  }
}

TEST(MarkdownTableParserTest, NoTables) {
  const Lines cases[] = {{},
                         {"a|b"},
                         {"a|b", "text"},
                         {"a|b", "--|--"},
                         {"a|b", "---|:::"},
                         {"a|b", "---|--x"},
                         {"a|b", "---|"},
                         {"|a|", "---|---"},
                         {"ab", "---|---"},
                         {"", "---|---"}};
  for (const Lines& lines : cases)
    EXPECT_FALSE(MarkdownTableParser::parse(lines, 0)) << testing::PrintToString(lines);
  EXPECT_FALSE(MarkdownTableParser::parse(Lines{"a|b", "---|---"}, 5));
}

TEST(MarkdownTableLayoutTest, Widths) {
  const std::string of300(30, 'a');
  const std::tuple<std::vector<std::string>, Rows, double, std::vector<double>> cases[] = {
      {{}, {}, 300, {84}},
      {{"a", "日记日记"}, {}, 640, {84, 124}},
      {{"a", "b"}, {{"a", "abcdef"}, {"abcd"}}, 640, {92, 108}},
      {{"\r\n\r\n\r\n\r\n", "e\u0301e\u0301", "👍🏽👍🏽x"}, {}, 640, {92, 92, 100}},
      {{std::string(500, 'a')}, {}, 2000, {560}},
      {{of300, of300, of300, of300}, {}, 500, {101, 101, 101, 101}},
      {std::vector<std::string>(10, "a"), {}, 300, std::vector<double>(10, 84)},
      {{of300}, {}, -50, {84}},
  };
  for (const auto& [headers, rows, container, expected] : cases)
    EXPECT_THAT(MarkdownTableLayout::columnWidths({headers, rows}, container),
                testing::Pointwise(testing::DoubleNear(1e-9), expected))
        << testing::PrintToString(headers);
  const auto mixed =
      MarkdownTableLayout::columnWidths({{"a", of300, std::string(60, 'a')}, {}}, 640);
  EXPECT_EQ(mixed[0], 84);
  EXPECT_NEAR(std::accumulate(mixed.begin(), mixed.end(), 0.0), 568, 1);
}

}  // namespace
}  // namespace nomely::test
