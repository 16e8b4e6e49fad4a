#include <random>

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

class Texts {
 public:
  // Either characters at random, or something well-formed with up to three characters changed.
  std::string draw() {
    static const auto wellFormed = piecesOf(
        "2026-03-01¦2026-3-1 9:30:05.25 +08:00¦2026-03-01T09:30:05Z¦2026-03-01\t09:30:05-5¦"
        "-12:30:59¦190:20:30.15¦+1_000.5e-10¦.5E+3¦0x1F_a¦0b10_1¦-0_17¦.NaN¦+.INF¦FALSE¦Yes¦null¦"
        "~");
    std::string text;
    if (below(2) == 0) {
      for (std::size_t left = below(7); left > 0; --left) text += character();
      return text;
    }
    text = wellFormed[below(wellFormed.size())];
    for (std::size_t left = below(4); left > 0; --left) change(text);
    return text;
  }

 private:
  std::size_t below(std::size_t bound) { return engine_() % bound; }
  char character() {
    constexpr std::string_view alphabet = "+-.0123456789_:eExXbBaAfFnNtTzZyYsSoOrRuUlLiI~<=T \t";
    return alphabet[below(alphabet.size())];
  }
  void change(std::string& text) {
    const std::size_t at = below(text.size() + 1);
    switch (below(3)) {
      case 0:
        text.insert(at, 1, character());
        break;
      case 1:
        if (at < text.size()) text[at] = character();
        break;
      default:
        if (at < text.size()) text.erase(at, 1);
    }
  }

  std::mt19937_64 engine_{20260301};
};

TEST(YamlScalarExpressionTest, TypesAreThoseOfTheExpressions) {
  const std::vector<Expression> all = expressions();
  std::map<Type, int> met;
  Texts texts;
  for (int round = 0; round < 150'000; ++round) {
    const std::string text = texts.draw();
    const std::u16string units = toUtf16(text);
    Type expected = Type::string;
    for (const Expression& candidate : all)
      if (expected == Type::string && candidate.expression.matchesIn(units))
        expected = candidate.type;
    ASSERT_EQ(YamlScalar::resolvePlain(text), expected) << testing::PrintToString(text);
    ++met[expected];
  }
  for (const Type type : {Type::null, Type::boolean, Type::integer, Type::floatingPoint,
                          Type::timestamp, Type::string})
    EXPECT_GT(met[type], 1000) << static_cast<int>(type);
}

}  // namespace
}  // namespace nomely::test
