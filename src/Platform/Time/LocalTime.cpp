#include "Platform/Time/LocalTime.h"

#include <ctime>

namespace nomely {

LocalTime LocalTime::of(Moment moment) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(moment);
  const auto rest = std::chrono::floor<std::chrono::milliseconds>(moment - seconds);
  const std::time_t time = seconds.time_since_epoch().count();
  std::tm parts{};
  ::localtime_r(&time, &parts);
  return {.year = parts.tm_year + 1900,
          .month = parts.tm_mon + 1,
          .day = parts.tm_mday,
          .hour = parts.tm_hour,
          .minute = parts.tm_min,
          .second = parts.tm_sec,
          .millisecond = static_cast<int>(rest.count()),
          .offset = static_cast<int>(parts.tm_gmtoff)};
}

Moment LocalTime::moment() const {
  using std::chrono::seconds;
  const std::chrono::sys_days date = std::chrono::year(year) / month / day;
  const Moment shown = date + std::chrono::hours(hour) + std::chrono::minutes(minute) +
                       seconds(second) + std::chrono::milliseconds(millisecond);
  // Not mktime: it would look for a changed zone. The offset of the day before is the one that
  // holds unless the clock has been changed since.
  const seconds before(of(shown - std::chrono::days(1)).offset);
  const seconds after(of(shown - before).offset);
  if (after == before || seconds(of(shown - after).offset) != after) return shown - before;
  return shown - after;
}

}  // namespace nomely
