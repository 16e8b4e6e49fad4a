#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace nomely {

// What a scalar means under the type repository of YAML 1.1 (yaml.org/type). Pure.
namespace YamlScalar {

enum class Type { string, null, boolean, integer, floatingPoint, timestamp, merge, value };

// The type of a plain (unquoted) scalar with that text.
[[nodiscard]] Type resolvePlain(std::string_view text);

// The value that `text` spells, quoted or not; absent when it spells none or doesn't fit 64 bits.
// Integers: decimal, 0b, 0 (octal), 0x, base 60, with "_" between digits.
[[nodiscard]] std::optional<bool> boolean(std::string_view text);
[[nodiscard]] std::optional<std::int64_t> integer(std::string_view text);
[[nodiscard]] std::optional<double> floatingPoint(std::string_view text);

// The shortest text that any YAML 1.1 reader reads as a number, and as this one.
[[nodiscard]] std::string text(double number);

}  // namespace YamlScalar

}  // namespace nomely
