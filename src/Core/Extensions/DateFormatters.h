#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Platform/Time/Day.h"
#include "Platform/Time/Moment.h"

namespace nomely {

// Formats and parses moments after a pattern of the Unicode date fields yyyy, MM, M, dd, d, HH, H,
// mm, ss, SSS (UTS #35); every other character stands for itself. Gregorian calendar, ASCII digits,
// local zone. Immutable, so safe on any thread.
class SafeDateFormatter {
 public:
  // `pattern` must outlive the formatter.
  constexpr explicit SafeDateFormatter(std::string_view pattern) : pattern_(pattern) {}

  [[nodiscard]] std::string format(Moment moment) const;
  // Strict: absent unless the moment found prints back to `text`. Fields that the pattern lacks
  // are those of 2000-01-01 00:00:00.
  [[nodiscard]] std::optional<Moment> parse(std::string_view text) const;

 private:
  std::string_view pattern_;
};

// The formats that the program shares.
namespace DateFormatters {
inline constexpr SafeDateFormatter isoDate{"yyyy-MM-dd"};
inline constexpr SafeDateFormatter isoDateTime{"yyyy-MM-dd HH:mm:ss"};
inline constexpr SafeDateFormatter timeOnly{"HH:mm"};
inline constexpr SafeDateFormatter yearOnly{"yyyy"};
inline constexpr SafeDateFormatter monthOnly{"MM"};
inline constexpr SafeDateFormatter fileNameTimestamp{"yyyy-MM-dd_HHmmss"};
inline constexpr SafeDateFormatter preciseTimestamp{"yyyyMMddHHmmssSSS"};
inline constexpr SafeDateFormatter exportDateTime{"yyyy-MM-dd HH:mm"};
inline constexpr SafeDateFormatter chineseDateTime{"yyyy.M.d H:mm"};

// "2026-03-01T09:30:05+08:00": ISO 8601 to the second with the local offset, Z when that is zero.
[[nodiscard]] std::string timestamp(Moment moment);
// The moment of such a text, with any offset and with fractions of a second, which others write.
[[nodiscard]] std::optional<Moment> parseTimestamp(std::string_view text);
// "2026-03-01T01:30:05Z": the same in UTC, as JSON files have it.
[[nodiscard]] std::string utcTimestamp(Moment moment);
// Absent unless it prints back to `text`.
[[nodiscard]] std::optional<Moment> parseUtcTimestamp(std::string_view text);
// "2026年3月1日 周日"
[[nodiscard]] std::string dayHeading(Day day);
}  // namespace DateFormatters

}  // namespace nomely
