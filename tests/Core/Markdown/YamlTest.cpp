#include <cmath>
#include <limits>
#include <sstream>

#include <gmock/gmock.h>

#include "Core/Markdown/Frontmatter/YamlDocument.h"
#include "Core/Markdown/Frontmatter/YamlError.h"
#include "Core/Markdown/Frontmatter/YamlScalar.h"
#include "Core/Markdown/Frontmatter/YamlWriter.h"

namespace nomely::test {
namespace {

using testing::HasSubstr;
using Node = YamlDocument::Node;
using Type = YamlScalar::Type;

TEST(YamlScalarTest, TypesOfPlainText) {
  const struct {
    Type type;
    const char* texts;  // between bars
  } cases[] = {
      {Type::null, "|~|null|Null|NULL"},
      {Type::boolean, "yes|Yes|NO|true|True|FALSE|on|Off"},
      {Type::integer, "0|-0|7|+7|-7|1_000|1__|017|0b101|0x1F|-0xff|12:30|190:20:30"},
      {Type::floatingPoint, "1.|1.5|-1.5|.5|1_0.5|1.5e+3|1.e-3|.inf|-.INF|.NaN|1:30.5"},
      {Type::timestamp,
       "2026-03-01|2026-03-01T09:30:05+08:00|2026-3-1 9:30:05|2026-03-01t09:30:05.25Z|"
       "2026-03-01 09:30:05 -5"},
      {Type::merge, "<<"},
      {Type::value, "="},
      {Type::string,
       "a|nULL|y|N|yES|09:05|08|0o17|1e3|12:60|12:|+|-|+.5|1.5e3|.|.Inf1|2026-3-1|"
       "2026-03-01T09:30|2026-03-01 09:30:05 CST|<|==|日记|１２|0b|0x|0b2|--1"},
  };
  for (const auto& c : cases) {
    std::istringstream texts(c.texts);
    for (std::string text; std::getline(texts, text, '|');) {
      SCOPED_TRACE(text);
      EXPECT_EQ(YamlScalar::resolvePlain(text), c.type);
    }
  }
}

TEST(YamlScalarTest, Integers) {
  const struct {
    const char* text;
    std::optional<std::int64_t> expected;
  } cases[] = {
      {"0", 0},
      {"-7", -7},
      {"+1_000", 1000},
      {"017", 15},
      {"0b101", 5},
      {"0xfF", 255},
      {"-0x10", -16},
      {"12:30", 750},
      {"-1:00:01", -3601},
      {"9223372036854775807", INT64_MAX},
      {"-9223372036854775808", INT64_MIN},
      {"9223372036854775808", {}},
      {"-9223372036854775809", {}},
      {"0xFFFFFFFFFFFFFFFFFF", {}},
      {"153722867280912930:08", {}},
      {"0b_", {}},
      {"abc", {}},
      {"1.0", {}},
      {"", {}},
      {"08", {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(YamlScalar::integer(c.text), c.expected);
  }
}

TEST(YamlScalarTest, FloatingPointNumbers) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  const struct {
    const char* text;
    std::optional<double> expected;
  } cases[] = {
      {"1.5", 1.5},
      {"-1.5", -1.5},
      {"+.5", 0.5},
      {"3", 3.0},
      {"1_0.5", 10.5},
      {"1e3", 1000.0},
      {"1.5E-3", 0.0015},
      {"1:30.5", 90.5},
      {"-1:30.5", -90.5},
      {"08:30.5", 510.5},
      {"010:00.5", 600.5},
      {".inf", infinity},
      {"-.Inf", -infinity},
      {"99999999999999999999", 1e20},
      {"", {}},
      {".", {}},
      {"-", {}},
      {"inf", {}},
      {"nan", {}},
      {"1.5x", {}},
      {"1:60.5", {}},
      {"--1", {}},
      {"1.5 ", {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(YamlScalar::floatingPoint(c.text), c.expected);
  }
  EXPECT_TRUE(std::isnan(YamlScalar::floatingPoint(".nan").value()));
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
  const struct {
    const char* value;
    const char* expected;  // null: any form that reads back
  } cases[] = {
      {"生活", "k: 生活\n"},
      {"09:05", "k: 09:05\n"},
      {"12:30", "k: '12:30'\n"},
      {"2026-03-01", "k: '2026-03-01'\n"},
      {"", "k: ''\n"},
      {"~", "k: '~'\n"},
      {"yes", "k: 'yes'\n"},
      {"1.5", "k: '1.5'\n"},
      {"007", "k: '007'\n"},
      {"<<", "k: '<<'\n"},
      {"=", "k: '='\n"},
      {"😀 \u3000", nullptr},
      {"💡a\uE000𠀀", "k: 💡a\uE000𠀀\n"},
      {"12:💡", "k: 12:💡\n"},
      {"\x01💡", "k: \"\\x01💡\"\n"},
      {"a\\U0001F4A1", "k: a\\U0001F4A1\n"},
      {"\r\\U0001F4A1💡\uE000", "k: \"\\r\\\\U0001F4A1💡\uE000\"\n"},
      {"a: b", nullptr},
      {"- a", nullptr},
      {"# a", nullptr},
      {"a #b", nullptr},
      {"&a *b !c %d @e `f", nullptr},
      {"'a' \"b\" \\n", nullptr},
      {" a ", nullptr},
      {"a\n", nullptr},
      {"\n\na\n\n b\n", nullptr},
      {"a\r\nb\rc", nullptr},
      {"a\u0085b", nullptr},
      {"a\u2028b\u2029c", nullptr},
      {"a\n\u2028\nb", nullptr},
      {"\t\x01\x7F\uFEFF", nullptr},
      {"---", nullptr},
      {"...", nullptr},
      {"[a", nullptr},
      {"? a", nullptr},
  };
  for (const auto& c : cases)
    for (const auto layout : {YamlWriter::Layout::folded, YamlWriter::Layout::singleLine}) {
      SCOPED_TRACE(c.value);
      const std::string text = written(c.value, layout);
      if (c.expected != nullptr) {
        EXPECT_EQ(text, c.expected);
      }
      std::string read;
      YamlDocument(text).root().forEachPair(
          [&](const Node&, const Node& value) { read = value.text(); });
      EXPECT_EQ(read, c.value) << text;
      if (layout == YamlWriter::Layout::singleLine) {
        EXPECT_EQ(std::ranges::count(text, '\n'), 1) << text;
      }
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
