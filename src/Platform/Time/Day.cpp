#include "Platform/Time/Day.h"

#include <fmt/format.h>

#include "Platform/Time/LocalTime.h"

namespace nomely {

Day Day::of(Moment moment) {
  const LocalTime local = LocalTime::of(moment);
  return Day(std::chrono::year(local.year) / local.month / local.day);
}

std::optional<Day> Day::from(int year, unsigned month, unsigned day) {
  const std::chrono::year_month_day civil =
      std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(day);
  // Of larger numbers the calendar's types keep the low byte.
  if (year < 1 || year > 9999 || month > 12 || day > 31 || !civil.ok()) return std::nullopt;
  return Day(civil);
}

std::optional<Day> Day::parse(std::string_view text) {
  if (text.size() != 10 || text[4] != '-' || text[7] != '-') return std::nullopt;
  const auto number = [&](std::size_t begin, std::size_t count) {
    int value = 0;
    for (const char digit : text.substr(begin, count)) {
      if (digit < '0' || digit > '9') return -1;
      value = value * 10 + (digit - '0');
    }
    return value;
  };
  const int year = number(0, 4);
  const int month = number(5, 2);
  const int day = number(8, 2);
  if (month < 1 || day < 1) return std::nullopt;
  return from(year, static_cast<unsigned>(month), static_cast<unsigned>(day));
}

std::string Day::string() const {
  const std::chrono::year_month_day date = civil();
  return fmt::format("{:04}-{:02}-{:02}", static_cast<int>(date.year()),
                     static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
}

Moment Day::start() const {
  const std::chrono::year_month_day date = civil();
  return LocalTime{.year = static_cast<int>(date.year()),
                   .month = static_cast<int>(static_cast<unsigned>(date.month())),
                   .day = static_cast<int>(static_cast<unsigned>(date.day()))}
      .moment();
}

}  // namespace nomely
