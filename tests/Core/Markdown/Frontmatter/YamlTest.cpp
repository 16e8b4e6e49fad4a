#include <map>

#include <fmt/format.h>

#include "Core/Markdown/Frontmatter/YamlScalar.h"
#include "Core/Markdown/Frontmatter/YamlWriter.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

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

using Type = YamlScalar::Type;

// The expressions of the YAML 1.1 types. A number's fraction is taken as digits, where the
// repository's own expression admits any number of dots, and single letters are no booleans: no
// resolver in use does either.
struct Expression {
  Type type;
  RegularExpression expression;
};

std::vector<Expression> expressions() {
  std::vector<Expression> all;
  const auto add = [&](Type type, const std::string& alternatives) {
    all.push_back({type, RegularExpression("\\A(?:" + alternatives + ")\\z")});
  };
  add(Type::null, "~|null|Null|NULL|");
  add(Type::boolean,
      "(?:yes|Yes|YES|no|No|NO|true|True|TRUE|false|False|FALSE|"
      "on|On|ON|off|Off|OFF)");
  add(Type::merge, "<<");
  add(Type::value, "=");
  add(Type::integer,
      "[-+]?0b[0-1_]+|[-+]?0[0-7_]+|[-+]?(?:0|[1-9][0-9_]*)|[-+]?0x[0-9a-fA-F_]+|"
      "[-+]?[1-9][0-9_]*(?::[0-5]?[0-9])+");
  add(Type::floatingPoint,
      "[-+]?[0-9][0-9_]*\\.[0-9_]*(?:[eE][-+][0-9]+)?|\\.[0-9_]+(?:[eE][-+][0-9]+)?|"
      "[-+]?[0-9][0-9_]*(?::[0-5]?[0-9])+\\.[0-9_]*|[-+]?\\.(?:inf|Inf|INF)|\\.(?:nan|NaN|NAN)");
  add(Type::timestamp,
      "[0-9]{4}-[0-9]{2}-[0-9]{2}|"
      "[0-9]{4}-[0-9][0-9]?-[0-9][0-9]?(?:[Tt]|[ \\t]+)[0-9][0-9]?:[0-9]{2}:[0-9]{2}"
      "(?:\\.[0-9]*)?(?:[ \\t]*(?:Z|[-+][0-9][0-9]?(?::[0-9]{2})?))?");
  return all;
}

// Of what the types are made of, and of what comes near.
constexpr std::string_view pieces =
    "2026-03-01¦2026-3-1¦1999-12-31¦T¦t¦ "
    "¦\t¦9:30:05¦09:30:05¦.25¦Z¦+08:00¦-5¦12:30¦:59¦:60¦:5¦190:20¦"
    "+¦-¦1¦10¦1_000¦0¦08¦017¦0x1F_a¦0b10_1¦0x¦0b¦_¦.5¦1.¦.¦e-10¦E+3¦e¦.NaN¦.nan¦.inf¦."
    "INF¦FALSE¦Yes¦"
    "on¦Off¦null¦Null¦~¦y¦n¦<<¦=¦<";

TEST(YamlScalarExpressionTest, TypesAreThoseOfTheExpressions) {
  const std::vector<Expression> all = expressions();
  std::map<Type, int> met;
  onRandomTexts(pieces, 5, 60'000, [&](const std::string& text) {
    const std::u16string units = toUtf16(text);
    Type expected = Type::string;
    for (const Expression& candidate : all)
      if (expected == Type::string && candidate.expression.matchesIn(units))
        expected = candidate.type;
    ASSERT_EQ(YamlScalar::resolvePlain(text), expected) << testing::PrintToString(text);
    ++met[expected];
  });
  for (const Type type : {Type::null, Type::boolean, Type::integer, Type::floatingPoint,
                          Type::timestamp, Type::string})
    EXPECT_GT(met[type], 300) << static_cast<int>(type);
}

}  // namespace
}  // namespace nomely::test
