#include <limits>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "Core/Markdown/Frontmatter/YamlDocument.h"
#include "Core/Markdown/Frontmatter/YamlError.h"
#include "Core/Markdown/Frontmatter/YamlScalar.h"
#include "Core/Markdown/Frontmatter/YamlWriter.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

using testing::HasSubstr;
using Node = YamlDocument::Node;
using Type = YamlScalar::Type;

// Each list pairs what is read with the number that it spells, "-" for none.
TEST(YamlScalarTest, Numbers) {
  constexpr std::string_view integers =
      "0¦0¦-7¦-7¦+1_000¦1000¦017¦15¦0b101¦5¦0xfF¦255¦-0x10¦-16¦12:30¦750¦-1:00:01¦-3601¦"
      "9223372036854775807¦9223372036854775807¦-9223372036854775808¦-9223372036854775808¦"
      "9223372036854775808¦-¦-9223372036854775809¦-¦0xFFFFFFFFFFFFFFFFFF¦-¦"
      "153722867280912930:08¦-¦0b_¦-¦abc¦-¦1.0¦-¦¦-¦08¦-";
  const std::vector<std::string> whole = piecesOf(integers);
  for (std::size_t i = 0; i < whole.size(); i += 2) {
    const auto read = YamlScalar::integer(whole[i]);
    EXPECT_EQ(read ? std::to_string(*read) : "-", whole[i + 1]) << whole[i];
  }
  constexpr std::string_view numbers =
      "1.5¦1.5¦-1.5¦-1.5¦+.5¦0.5¦3¦3¦1_0.5¦10.5¦1e3¦1000¦1.5E-3¦0.0015¦1:30.5¦90.5¦-1:30.5¦-90.5¦"
      "08:30.5¦510.5¦010:00.5¦600.5¦.inf¦inf¦-.Inf¦-inf¦99999999999999999999¦1e+20¦.nan¦nan¦"
      "¦-¦.¦-¦-¦-¦inf¦-¦nan¦-¦1.5x¦-¦1:60.5¦-¦--1¦-¦1.5 ¦-";
  const std::vector<std::string> all = piecesOf(numbers);
  for (std::size_t i = 0; i < all.size(); i += 2) {
    const auto read = YamlScalar::floatingPoint(all[i]);
    EXPECT_EQ(read ? fmt::format("{}", *read) : "-", all[i + 1]) << all[i];
  }
}

TEST(YamlScalarTest, WrittenNumbersReadBack) {
  const struct {
    double number;
    const char* expected;
  } cases[] = {
      {0.0, "0.0"},
      {-0.0, "-0.0"},
      {2.0, "2.0"},
      {0.1, "0.1"},
      {1e21, "1000000000000000000000.0"},
      {1e-7, "0.0000001"},
      {-12.25, "-12.25"},
      {std::numeric_limits<double>::infinity(), ".inf"},
  };
  for (const auto& c : cases) EXPECT_EQ(YamlScalar::text(c.number), c.expected);
  for (const double number :
       {std::numeric_limits<double>::max(), std::numeric_limits<double>::denorm_min(), 1.0 / 3,
        12345.678901234567}) {
    const std::string text = YamlScalar::text(number);
    EXPECT_EQ(YamlScalar::floatingPoint(text), number);
    EXPECT_EQ(YamlScalar::resolvePlain(text), Type::floatingPoint);
  }
}

// "[...]" and "{...}" for collections, strings that are no plain ones in quotes.
std::string show(const Node& node) {
  std::string text;
  const auto separate = [&] { text += text.empty() ? "" : ", "; };
  switch (node.kind()) {
    case YamlDocument::Kind::scalar:
      text = node.text();
      return node.isPlain() ? text : '"' + text + '"';
    case YamlDocument::Kind::sequence:
      node.forEachItem([&](const Node& item) {
        separate();
        text += show(item);
      });
      return "[" + text + "]";
    case YamlDocument::Kind::mapping:
      node.forEachPair([&](const Node& key, const Node& value) {
        separate();
        text += show(key) + ": " + show(value);
      });
      return "{" + text + "}";
  }
  return text;
}

TEST(YamlDocumentTest, Reads) {
  const struct {
    const char* name;
    const char* source;
    const char* expected;
  } cases[] = {
      {"scalar", "a", "a"},
      {"block and flow", "a: 1\nb:\n- x\n- {y: [], z: {}}\n", "{a: 1, b: [x, {y: [], z: {}}]}"},
      {"quoting undone", R"(["a\tb\u65e5", 'it''s', !!str 1, "1"])",
       "[\"a\tb日\", \"it's\", \"1\", \"1\"]"},
      {"several lines", "a: |\n  x\n  y\nb: >\n  x\n  y\n", "{a: \"x\ny\n\", b: \"x y\n\"}"},
      {"anchors", "a: &n {x: 1}\nb: *n\nc: [*n, *n]\n",
       "{a: {x: 1}, b: {x: 1}, c: [{x: 1}, {x: 1}]}"},
      {"anchor given anew", "[&n 1, *n, &n 2, *n]", "[1, 1, 2, 2]"},
      {"anchor given anew inside", "[&n [&n 1, *n], *n]", "[[1, 1], 1]"},
      {"alias as key", "[&k a, {*k : 1}]", "[a, {a: 1}]"},
      {"merge key stands as it is", "{<<: {a: 1}}", "{<<: {a: 1}}"},
      {"equal keys stand as they are", "{a: 1, a: 2}", "{a: 1, a: 2}"},
      {"empty values", "a:\nb: ~\n", "{a: , b: ~}"},
      {"document markers", "%YAML 1.1\n---\na\n...\n", "a"},
      {"comments", "# c\na: 1 # d\n", "{a: 1}"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(show(YamlDocument(c.source).root()), c.expected);
  }
  const YamlDocument nulls("[~, null, '', \"null\", x, []]");
  std::string seen;
  nulls.root().forEachItem([&](const Node& item) { seen += item.isNull() ? 'n' : '-'; });
  EXPECT_EQ(seen, "nn----");
}

std::string nested(std::size_t depth) {
  return std::string(depth, '[') + std::string(depth, ']');
}

TEST(YamlDocumentTest, Refuses) {
  const struct {
    const char* name;
    std::string source;
    const char* message;
  } cases[] = {
      {"nothing", "", "empty document"},
      {"a comment alone", "# c\n", "empty document"},
      {"two documents", "a\n---\nb\n", "more than one document"},
      {"open bracket", "a: [1\n", "line "},
      {"tab as indent", "a:\n\t- b\n", "line 2, column 1"},
      {"unknown alias", "a: *n\n", "line 1, column 4: undefined alias"},
      {"alias into itself", "a: &n [*n]\n", "alias into itself"},
      {"alias deep into itself", "a: &n {b: [1, {c: *n}]}\n", "alias into itself"},
      {"too deep", nested(YamlDocument::maxDepth + 1), "nested too deeply"},
      {"control character", "a: \x01\n", "control characters"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    try {
      const YamlDocument document(c.source);
      ADD_FAILURE() << show(document.root());
    } catch (const YamlError& error) {
      EXPECT_THAT(error.problem(), HasSubstr(c.message));
    }
  }
  EXPECT_EQ(show(YamlDocument(nested(YamlDocument::maxDepth)).root()),
            nested(YamlDocument::maxDepth));
}

TEST(YamlDocumentTest, BoundsWhatAliasesExpandTo) {
  // Each level names the one before ten times.
  std::string source = "- &a0 [x, x, x, x, x, x, x, x, x, x]\n";
  const auto add = [&](int level) {
    const std::string before = std::to_string(level - 1);
    std::string items = "*a" + before;
    for (int i = 1; i < 10; ++i) items += ", *a" + before;
    source += "- &a" + std::to_string(level) + " [" + items + "]\n";
  };
  for (int level = 1; level <= 4; ++level) add(level);
  EXPECT_NO_THROW(YamlDocument{source});
  for (int level = 5; level <= 9; ++level) add(level);
  EXPECT_THROW(YamlDocument{source}, YamlError);
}

std::string written(std::string_view value, YamlWriter::Layout layout) {
  YamlWriter writer(layout);
  writer.beginMapping();
  writer.string("k");
  writer.string(value);
  writer.endMapping();
  return writer.finish();
}

TEST(YamlWriterTest, StringsStayStrings) {
  // What is written, where it is not just any form that reads back.
  const std::map<std::string, std::string> forms{
      {"生活", "k: 生活\n"},
      {"09:05", "k: 09:05\n"},
      {"💡a\uE000𠀀", "k: 💡a\uE000𠀀\n"},
      {"12:💡", "k: 12:💡\n"},
      {"\x01💡", "k: \"\\x01💡\"\n"},
      {"a\\U0001F4A1", "k: a\\U0001F4A1\n"},
      {"\r\\U0001F4A1💡\uE000", "k: \"\\r\\\\U0001F4A1💡\uE000\"\n"},
  };
  std::vector<std::string> values = piecesOf(
      "😀 \u3000¦a: b¦- a¦# a¦a #b¦&a *b !c %d @e `f¦'a' \"b\" \\n¦ a ¦a\n¦\n\na\n\n b\n¦a\r\nb\rc¦"
      "a\u0085b¦a\u2028b\u2029c¦a\n\u2028\nb¦\t\x01\x7F\uFEFF¦---¦...¦[a¦? a");
  for (const auto& [value, form] : forms) values.push_back(value);
  for (const std::string& quoted : piecesOf("12:30¦2026-03-01¦¦~¦yes¦1.5¦007¦<<¦=")) {
    EXPECT_EQ(written(quoted, YamlWriter::Layout::folded), "k: '" + quoted + "'\n");
    values.push_back(quoted);
  }
  for (const std::string& value : values)
    for (const auto layout : {YamlWriter::Layout::folded, YamlWriter::Layout::singleLine}) {
      SCOPED_TRACE(testing::PrintToString(value));
      const std::string text = written(value, layout);
      const auto form = forms.find(value);
      EXPECT_TRUE(form == forms.end() || form->second == text) << text;
      std::string read;
      YamlDocument(text).root().forEachPair(
          [&](const Node&, const Node& found) { read = found.text(); });
      EXPECT_EQ(read, value) << text;
      EXPECT_TRUE(layout == YamlWriter::Layout::folded || std::ranges::count(text, '\n') == 1);
    }
}

TEST(YamlWriterTest, FoldsLongTextAndRefusesBadText) {
  std::string text;
  for (int i = 0; i < 60; ++i) text += "word ---  ";
  text += "end";
  const std::string folded = written(text, YamlWriter::Layout::folded);
  EXPECT_GT(std::ranges::count(folded, '\n'), 3);
  YamlDocument(folded).root().forEachPair(
      [&](const Node&, const Node& value) { EXPECT_EQ(value.text(), text); });
  EXPECT_THROW(written("a\xFF", YamlWriter::Layout::folded), YamlError);
}

}  // namespace
}  // namespace nomely::test
