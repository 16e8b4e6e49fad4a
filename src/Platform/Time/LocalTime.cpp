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
  std::tm parts{};
  parts.tm_year = year - 1900;
  parts.tm_mon = month - 1;
  parts.tm_mday = day;
  parts.tm_hour = hour;
  parts.tm_min = minute;
  parts.tm_sec = second;
  parts.tm_isdst = -1;
  return Moment(std::chrono::seconds(::mktime(&parts)) + std::chrono::milliseconds(millisecond));
}

}  // namespace nomely
