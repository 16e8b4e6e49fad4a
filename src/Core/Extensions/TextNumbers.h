#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

namespace nomely {

// The number that the whole of `text` spells as an optional sign and ASCII digits: "+7" → 7. Absent
// for anything else ("7 ", "") and for numbers that do not fit 64 bits.
[[nodiscard]] inline std::optional<std::int64_t> parseDecimal(std::string_view text) {
  const bool plus = text.starts_with('+');
  if (plus) text.remove_prefix(1);
  if (text.empty() || (plus && text.front() == '-')) return std::nullopt;
  std::int64_t value = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stop != end) return std::nullopt;
  return value;
}

}  // namespace nomely
