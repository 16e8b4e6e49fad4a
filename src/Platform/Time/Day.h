#pragma once

#include <chrono>
#include <compare>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Time/Moment.h"

namespace nomely {

// A civil day of the Gregorian calendar, years 0001 to 9999, free of any time zone.
class Day {
 public:
  constexpr explicit Day(std::chrono::sys_days days) : days_(days) {}
  // The local day on which `moment` falls.
  [[nodiscard]] static Day of(Moment moment);
  // Absent when there is no such day.
  [[nodiscard]] static std::optional<Day> from(int year, unsigned month, unsigned day);
  // Exactly "yyyy-MM-dd": a text that does not print back to itself is no day.
  [[nodiscard]] static std::optional<Day> parse(std::string_view text);

  [[nodiscard]] std::string string() const;  // "yyyy-MM-dd"
  [[nodiscard]] std::chrono::year_month_day civil() const { return days_; }
  [[nodiscard]] Day plusDays(int count) const { return Day(days_ + std::chrono::days(count)); }
  // The first moment of the day in the local zone.
  [[nodiscard]] Moment start() const;

  friend auto operator<=>(const Day&, const Day&) = default;

 private:
  std::chrono::sys_days days_;
};

}  // namespace nomely
