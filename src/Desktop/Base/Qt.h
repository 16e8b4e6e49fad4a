#pragma once

#include <QDate>
#include <QString>
#include <string>
#include <string_view>

#include "Platform/Time/Day.h"

namespace nomely {

// Between the house's values and Qt's.
[[nodiscard]] inline QString qt(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}
[[nodiscard]] inline std::string utf8(const QString& text) {
  return text.toStdString();
}
[[nodiscard]] inline QDate qtDate(Day day) {
  const std::chrono::year_month_day civil = day.civil();
  return {static_cast<int>(civil.year()), static_cast<int>(static_cast<unsigned>(civil.month())),
          static_cast<int>(static_cast<unsigned>(civil.day()))};
}
// `date` has to be valid and of the years 1 to 9999.
[[nodiscard]] inline Day dayOf(QDate date) {
  return Day(std::chrono::sys_days(std::chrono::days(date.toJulianDay() - 2440588)));
}

}  // namespace nomely
