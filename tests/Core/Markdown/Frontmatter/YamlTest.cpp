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

// Each list pairs what is read with the number that it spells, "-" for none.
TEST(YamlScalarTest, Numbers) {
  constexpr std::string_view integers =
      "0¦0¦-7¦-7¦+1_000¦1000¦017¦15¦0b101¦5¦0xfF¦255¦-0x10¦-16¦12:30¦750¦-1:00:01¦-3601¦"
      "9223372036854775807¦9223372036854775807¦-9223372036854775808¦-9223372036854775808¦"
      "9223372036854775808¦-¦-9223372036854775809¦-¦0xFFFFFFFFFFFFFFFFFF¦-¦"
      "153722867280912930:08¦-¦0b_¦-¦abc¦-¦1.0¦-¦¦-¦08¦-";
  for (const auto& [text, value] : rowsOf<2>(integers)) {
    const auto read = YamlScalar::integer(text);
    EXPECT_EQ(read ? std::to_string(*read) : "-", value) << text;
  }
  constexpr std::string_view numbers =
      "1.5¦1.5¦-1.5¦-1.5¦+.5¦0.5¦3¦3¦1_0.5¦10.5¦1e3¦1000¦1.5E-3¦0.0015¦1:30.5¦90.5¦-1:30.5¦-90.5¦"
      "08:30.5¦510.5¦010:00.5¦600.5¦.inf¦inf¦-.Inf¦-inf¦99999999999999999999¦1e+20¦.nan¦nan¦"
      "¦-¦.¦-¦-¦-¦inf¦-¦nan¦-¦1.5x¦-¦1:60.5¦-¦--1¦-¦1.5 ¦-";
  for (const auto& [text, value] : rowsOf<2>(numbers)) {
    const auto read = YamlScalar::floatingPoint(text);
    EXPECT_EQ(read ? fmt::format("{}", *read) : "-", value) << text;
  }
  for (const auto& [number, text] : {std::pair(-0.0, "-0.0"),
                                     {2, "2.0"},
                                     {1e-7, "0.0000001"},
                                     {1e21, "1000000000000000000000.0"}})
    EXPECT_EQ(YamlScalar::text(number), text);
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
      {"two documents", "a\n---\nb\n", "more than one document"},
      {"unknown alias", "a: *n\n", "line 1, column 4: undefined alias"},
      {"alias deep into itself", "a: &n {b: [1, {c: *n}]}\n", "alias into itself"},
      {"too deep", nested(YamlDocument::maxDepth + 1), "nested too deeply"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    try {
      const YamlDocument document(c.source);
      ADD_FAILURE() << "was read";
    } catch (const YamlError& error) {
      EXPECT_THAT(error.problem(), HasSubstr(c.message));
    }
  }
  EXPECT_NO_THROW(YamlDocument{nested(YamlDocument::maxDepth)});
}

std::string written(std::string_view value) {
  YamlWriter writer(YamlWriter::Layout::folded);
  writer.beginMapping();
  writer.string("k");
  writer.string(value);
  writer.endMapping();
  return writer.finish();
}

// Any form would read back, but files are not to change.
TEST(YamlWriterTest, FormsOfStrings) {
  for (const char* value : {"生活", "09:05", "💡a\uE000𠀀", "12:💡", "a\\U0001F4A1"})
    EXPECT_EQ(written(value), fmt::format("k: {}\n", value));
  for (const std::string& value : piecesOf("12:30¦2026-03-01¦¦~¦yes¦1.5¦007¦<<¦="))
    EXPECT_EQ(written(value), fmt::format("k: '{}'\n", value));
  EXPECT_EQ(written("a\u0085b\u2028c\r"), "k: \"a\\Nb\\Lc\\r\"\n");
  EXPECT_EQ(written("\x01💡"), "k: \"\\x01💡\"\n");
  EXPECT_EQ(written("\r\\U0001F4A1💡\uE000"), "k: \"\\r\\\\U0001F4A1💡\uE000\"\n");
}

}  // namespace
}  // namespace nomely::test
