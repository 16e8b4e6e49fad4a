#include <map>

#include <gtest/gtest.h>

#include "Core/Markdown/Frontmatter/YamlScalar.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

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
