#include "Platform/Time/ChineseDates.h"

#include <stdexcept>

#include <unicode/smpdtfmt.h>

namespace nomely {

struct ChineseDates::Formatter {
  std::unique_ptr<icu::SimpleDateFormat> format;
};

ChineseDates::ChineseDates(const std::string& pattern) : formatter_(std::make_unique<Formatter>()) {
  UErrorCode status = U_ZERO_ERROR;
  formatter_->format = std::make_unique<icu::SimpleDateFormat>(
      icu::UnicodeString::fromUTF8(pattern), icu::Locale("zh", "CN"), status);
  if (U_FAILURE(status)) throw std::runtime_error("ICU has no Chinese dates");
  // A civil day is the same everywhere.
  formatter_->format->setTimeZone(*icu::TimeZone::getGMT());
}

ChineseDates::~ChineseDates() = default;

std::string ChineseDates::format(Day day) const {
  const std::chrono::sys_days days(day.civil());
  const double milliseconds =
      static_cast<double>(std::chrono::milliseconds(days.time_since_epoch()).count());
  icu::UnicodeString text;
  formatter_->format->format(milliseconds, text);
  std::string utf8;
  return text.toUTF8String(utf8);
}

}  // namespace nomely
