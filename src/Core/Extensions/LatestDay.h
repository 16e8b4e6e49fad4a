#pragma once

#include <optional>

#include "Platform/Time/Day.h"

namespace nomely {

// The latest day of that month and day that is not after `today`: on 2026-03-01, 3-1 → 2026-03-01
// and 12-24 → 2025-12-24. Absent when no year has such a day.
[[nodiscard]] inline std::optional<Day> latestDay(unsigned month, unsigned day, Day today) {
  const int year = static_cast<int>(today.civil().year());
  // A 29 February can be eight years away.
  for (int back = 0; back <= 8; ++back)
    if (const auto found = Day::from(year - back, month, day); found && *found <= today)
      return found;
  return std::nullopt;
}

}  // namespace nomely
