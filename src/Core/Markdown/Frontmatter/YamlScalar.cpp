#include "Core/Markdown/Frontmatter/YamlScalar.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <span>

namespace nomely {
namespace {

using Words = std::span<const std::string_view>;

constexpr std::array<std::string_view, 4> nullWords{"", "~", "null", "Null"};
constexpr std::array<std::string_view, 9> trueWords{"yes",  "Yes", "YES", "true", "True",
                                                    "TRUE", "on",  "On",  "ON"};
constexpr std::array<std::string_view, 9> falseWords{"no",    "No",  "NO",  "false", "False",
                                                     "FALSE", "off", "Off", "OFF"};
constexpr std::array<std::string_view, 3> infinityWords{".inf", ".Inf", ".INF"};
constexpr std::array<std::string_view, 3> nanWords{".nan", ".NaN", ".NAN"};

bool isOneOf(std::string_view text, Words words) {
  return std::ranges::find(words, text) != words.end();
}

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

// Reads a text from the front; every `take` removes what it accepted and returns how much.
class Cursor {
 public:
  explicit Cursor(std::string_view text) : rest_(text) {}

  [[nodiscard]] bool atEnd() const { return rest_.empty(); }
  [[nodiscard]] std::string_view rest() const { return rest_; }

  bool take(std::string_view anyOf) {
    if (rest_.empty() || anyOf.find(rest_.front()) == std::string_view::npos) return false;
    rest_.remove_prefix(1);
    return true;
  }
  template <typename Belongs>
  std::size_t takeAll(Belongs belongs, std::size_t most = std::string_view::npos) {
    std::size_t count = 0;
    while (count < rest_.size() && count < most && belongs(rest_[count])) ++count;
    rest_.remove_prefix(count);
    return count;
  }
  // A number of digits within the bounds.
  bool takeDigits(std::size_t least, std::size_t most) { return takeAll(isDigit, most) >= least; }

 private:
  std::string_view rest_;
};

bool isDigitOrUnderscore(char c) {
  return isDigit(c) || c == '_';
}

// One or more of ":" and a number below sixty.
bool takeSexagesimalTail(Cursor& cursor) {
  std::size_t groups = 0;
  for (;; ++groups) {
    Cursor ahead = cursor;
    if (!ahead.take(":")) break;
    const std::string_view digits = ahead.rest();
    const std::size_t count = ahead.takeAll(isDigit, 2);
    if (count == 0 || (count == 2 && digits[0] > '5')) break;
    cursor = ahead;
  }
  return groups > 0;
}

bool isInteger(std::string_view text) {
  Cursor cursor(text);
  cursor.take("+-");
  const std::string_view digits = cursor.rest();
  if (digits == "0") return true;
  if (cursor.take("0")) {
    if (cursor.take("b"))
      return cursor.takeAll([](char c) { return c == '0' || c == '1' || c == '_'; }) > 0 &&
             cursor.atEnd();
    if (cursor.take("x"))
      return cursor.takeAll([](char c) {
        return isDigitOrUnderscore(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
      }) > 0 &&
             cursor.atEnd();
    return cursor.takeAll([](char c) { return (c >= '0' && c <= '7') || c == '_'; }) > 0 &&
           cursor.atEnd();
  }
  if (!cursor.take("123456789")) return false;
  cursor.takeAll(isDigitOrUnderscore);
  if (cursor.atEnd()) return true;
  return takeSexagesimalTail(cursor) && cursor.atEnd();
}

bool takeExponent(Cursor& cursor) {
  Cursor ahead = cursor;
  if (!ahead.take("eE") || !ahead.take("+-") || !ahead.takeDigits(1, std::string_view::npos))
    return false;
  cursor = ahead;
  return true;
}

bool isFloat(std::string_view text) {
  if (isOneOf(text, nanWords)) return true;
  Cursor cursor(text);
  const bool isSigned = cursor.take("+-");
  if (isOneOf(cursor.rest(), infinityWords)) return true;
  if (!isSigned && cursor.take(".")) {
    if (cursor.takeAll(isDigitOrUnderscore) == 0) return false;
    takeExponent(cursor);
    return cursor.atEnd();
  }
  if (!cursor.take("0123456789")) return false;
  cursor.takeAll(isDigitOrUnderscore);
  const bool sexagesimal = takeSexagesimalTail(cursor);
  if (!cursor.take(".")) return false;
  cursor.takeAll(isDigitOrUnderscore);
  if (!sexagesimal) takeExponent(cursor);
  return cursor.atEnd();
}

bool isBlank(char c) {
  return c == ' ' || c == '\t';
}

bool isTimestamp(std::string_view text) {
  Cursor day(text);
  if (day.takeDigits(4, 4) && day.take("-") && day.takeDigits(2, 2) && day.take("-") &&
      day.takeDigits(2, 2) && day.atEnd())
    return true;
  Cursor cursor(text);
  if (!cursor.takeDigits(4, 4) || !cursor.take("-") || !cursor.takeDigits(1, 2) ||
      !cursor.take("-") || !cursor.takeDigits(1, 2))
    return false;
  if (!cursor.take("Tt") && cursor.takeAll(isBlank) == 0) return false;
  if (!cursor.takeDigits(1, 2) || !cursor.take(":") || !cursor.takeDigits(2, 2) ||
      !cursor.take(":") || !cursor.takeDigits(2, 2))
    return false;
  if (cursor.take(".")) cursor.takeAll(isDigit);
  if (cursor.atEnd()) return true;
  cursor.takeAll(isBlank);
  if (cursor.take("Z")) return cursor.atEnd();
  if (!cursor.take("+-") || !cursor.takeDigits(1, 2)) return false;
  if (cursor.take(":") && !cursor.takeDigits(2, 2)) return false;
  return cursor.atEnd();
}

std::string withoutUnderscores(std::string_view text) {
  std::string digits(text);
  std::erase(digits, '_');
  return digits;
}

// `digits` in groups of base 60 when it holds ":".
std::optional<std::uint64_t> groups(std::string_view digits, int base) {
  std::uint64_t total = 0;
  for (;;) {
    std::uint64_t group = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, group, base);
    if (error != std::errc() || __builtin_mul_overflow(total, 60U, &total) ||
        __builtin_add_overflow(total, group, &total))
      return std::nullopt;
    if (stop == end) return total;
    if (*stop != ':') return std::nullopt;
    digits.remove_prefix(static_cast<std::size_t>(stop - digits.data()) + 1);
  }
}

// `digits` without sign.
std::optional<std::uint64_t> magnitude(std::string_view digits) {
  if (digits.starts_with("0b")) return groups(digits.substr(2), 2);
  if (digits.starts_with("0x")) return groups(digits.substr(2), 16);
  return groups(digits, digits.size() > 1 && digits.front() == '0' ? 8 : 10);
}

std::optional<double> decimal(std::string_view text) {
  double number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

}  // namespace

YamlScalar::Type YamlScalar::resolvePlain(std::string_view text) {
  if (isOneOf(text, nullWords) || text == "NULL") return Type::null;
  // No other form is long or begins with anything else; most text is decided here.
  constexpr std::string_view firstCharacters = "+-.0123456789YyNnTtFfOo<=";
  if (firstCharacters.find(text.front()) == std::string_view::npos) return Type::string;
  if (isOneOf(text, trueWords) || isOneOf(text, falseWords)) return Type::boolean;
  if (text == "<<") return Type::merge;
  if (text == "=") return Type::value;
  if (isInteger(text)) return Type::integer;
  if (isFloat(text)) return Type::floatingPoint;
  if (isTimestamp(text)) return Type::timestamp;
  return Type::string;
}

std::optional<bool> YamlScalar::boolean(std::string_view text) {
  if (isOneOf(text, trueWords)) return true;
  if (isOneOf(text, falseWords)) return false;
  return std::nullopt;
}

std::optional<std::int64_t> YamlScalar::integer(std::string_view text) {
  if (!isInteger(text)) return std::nullopt;
  const bool negative = text.front() == '-';
  if (negative || text.front() == '+') text.remove_prefix(1);
  const auto found = magnitude(withoutUnderscores(text));
  constexpr auto limit = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  if (!found || *found > limit + (negative ? 1U : 0U)) return std::nullopt;
  return static_cast<std::int64_t>(negative ? 0U - *found : *found);
}

std::optional<double> YamlScalar::floatingPoint(std::string_view text) {
  if (const auto whole = integer(text)) return static_cast<double>(*whole);
  if (isOneOf(text, nanWords)) return std::numeric_limits<double>::quiet_NaN();
  const bool negative = text.starts_with('-');
  std::string_view unsignedText = text;
  if (negative || text.starts_with('+')) unsignedText.remove_prefix(1);
  if (isOneOf(unsignedText, infinityWords))
    return negative ? -std::numeric_limits<double>::infinity()
                    : std::numeric_limits<double>::infinity();
  if (unsignedText.empty() || (!isDigit(unsignedText.front()) && unsignedText.front() != '.'))
    return std::nullopt;
  const std::string digits = withoutUnderscores(unsignedText);
  std::string_view lastGroup = digits;
  double leading = 0;
  if (const std::size_t colon = digits.rfind(':'); colon != std::string::npos) {
    // Leading zeros mean octal in an integer only.
    const auto whole = groups(std::string_view(digits).substr(0, colon), 10);
    if (!isFloat(text) || !whole) return std::nullopt;
    leading = static_cast<double>(*whole) * 60;
    lastGroup.remove_prefix(colon + 1);
  }
  // Exponents without sign or point are no YAML 1.1, but other writers produce them.
  const auto number = decimal(lastGroup);
  if (!number) return std::nullopt;
  return negative ? -(leading + *number) : leading + *number;
}

std::string YamlScalar::text(double number) {
  if (std::isnan(number)) return ".nan";
  if (std::isinf(number)) return number < 0 ? "-.inf" : ".inf";
  std::array<char, 400> buffer{};
  const auto end =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, std::chars_format::fixed)
          .ptr;
  std::string digits(buffer.data(), end);
  if (digits.find('.') == std::string::npos) digits += ".0";
  return digits;
}

}  // namespace nomely
