#include "Core/Extensions/DateFormatters.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include <fmt/format.h>

#include "Platform/Time/LocalTime.h"

namespace nomely {
namespace {

struct Field {
  std::string_view letters;
  int LocalTime::*value;
};

// A longer field stands before its own prefix.
constexpr std::array fields{
    Field{"yyyy", &LocalTime::year}, Field{"MM", &LocalTime::month},
    Field{"M", &LocalTime::month},   Field{"dd", &LocalTime::day},
    Field{"d", &LocalTime::day},     Field{"HH", &LocalTime::hour},
    Field{"H", &LocalTime::hour},    Field{"mm", &LocalTime::minute},
    Field{"ss", &LocalTime::second}, Field{"SSS", &LocalTime::millisecond},
};

const Field* fieldAt(std::string_view pattern) {
  for (const Field& field : fields)
    if (pattern.starts_with(field.letters)) return &field;
  return nullptr;
}

// Calls `onField` or `onLiteral` for each piece of the pattern until one returns false.
template <typename OnField, typename OnLiteral>
bool walk(std::string_view pattern, OnField onField, OnLiteral onLiteral) {
  while (!pattern.empty()) {
    const Field* field = fieldAt(pattern);
    if (field != nullptr ? !onField(*field) : !onLiteral(pattern.front())) return false;
    pattern.remove_prefix(field != nullptr ? field->letters.size() : 1);
  }
  return true;
}

}  // namespace

std::string SafeDateFormatter::format(Moment moment) const {
  const LocalTime local = LocalTime::of(moment);
  std::string text;
  walk(
      pattern_,
      [&](const Field& field) {
        fmt::format_to(std::back_inserter(text), "{:0{}}", local.*field.value,
                       field.letters.size());
        return true;
      },
      [&](char literal) {
        text += literal;
        return true;
      });
  return text;
}

std::optional<Moment> SafeDateFormatter::parse(std::string_view text) const {
  LocalTime local{.year = 2000};
  std::string_view rest = text;
  const bool matched = walk(
      pattern_,
      [&](const Field& field) {
        const std::size_t width = field.letters.size() == 1 ? 2 : field.letters.size();
        int value = 0;
        std::size_t count = 0;
        while (count < width && count < rest.size() && rest[count] >= '0' && rest[count] <= '9')
          value = value * 10 + (rest[count++] - '0');
        rest.remove_prefix(count);
        local.*field.value = value;
        return count > 0;
      },
      [&](char literal) {
        if (!rest.starts_with(literal)) return false;
        rest.remove_prefix(1);
        return true;
      });
  if (!matched || !rest.empty()) return std::nullopt;
  const Moment moment = local.moment();
  if (format(moment) != text) return std::nullopt;
  return moment;
}

std::string DateFormatters::timestamp(Moment moment) {
  const LocalTime local = LocalTime::of(moment);
  std::string text = fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}", local.year, local.month,
                                 local.day, local.hour, local.minute, local.second);
  if (local.offset == 0) return text + "Z";
  const int minutes = std::abs(local.offset) / 60;
  return text +
         fmt::format("{}{:02}:{:02}", local.offset < 0 ? '-' : '+', minutes / 60, minutes % 60);
}

std::string DateFormatters::utcTimestamp(Moment moment) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(moment);
  const auto midnight = std::chrono::floor<std::chrono::days>(seconds);
  const std::chrono::hh_mm_ss time(seconds - midnight);
  return fmt::format("{}T{:02}:{:02}:{:02}Z", Day(midnight).string(), time.hours().count(),
                     time.minutes().count(), time.seconds().count());
}

std::optional<Moment> DateFormatters::parseUtcTimestamp(std::string_view text) {
  constexpr std::size_t dateLength = 10;
  int hour = 0;
  int minute = 0;
  int second = 0;
  const auto day = Day::parse(text.substr(0, dateLength));
  if (!day || std::sscanf(std::string(text.substr(dateLength)).c_str(), "T%2d:%2d:%2d", &hour,
                          &minute, &second) != 3)
    return std::nullopt;
  const Moment moment = std::chrono::sys_days(day->civil()) + std::chrono::hours(hour) +
                        std::chrono::minutes(minute) + std::chrono::seconds(second);
  if (utcTimestamp(moment) != text) return std::nullopt;
  return moment;
}

std::optional<Moment> DateFormatters::parseTimestamp(std::string_view text) {
  constexpr std::size_t plainLength = std::string_view("2026-03-01T09:30:05").size();
  constexpr std::string_view digits = "0123456789";
  const auto plain = parseUtcTimestamp(std::string(text.substr(0, plainLength)) + "Z");
  if (!plain) return std::nullopt;
  text.remove_prefix(plainLength);
  Moment moment = *plain;
  if (text.starts_with('.')) {
    const std::string_view fraction = text.substr(1, text.find_first_not_of(digits, 1) - 1);
    std::int64_t step = std::chrono::microseconds(std::chrono::seconds(1)).count();
    for (const char digit : fraction) moment += Moment::duration((digit - '0') * (step /= 10));
    text.remove_prefix(1 + fraction.size());
  }
  if (text == "Z") return moment;
  int hours = 0;
  int minutes = 0;
  char end = 0;
  if (text.empty() || (text.front() != '+' && text.front() != '-') ||
      std::sscanf(std::string(text.substr(1)).c_str(), "%2d:%2d%c", &hours, &minutes, &end) != 2)
    return std::nullopt;
  const auto offset = std::chrono::hours(hours) + std::chrono::minutes(minutes);
  return text.front() == '+' ? moment - offset : moment + offset;
}

std::string DateFormatters::dayHeading(Day day) {
  constexpr std::array weekdays{"周日", "周一", "周二", "周三", "周四", "周五", "周六"};
  const auto date = day.civil();
  const std::chrono::weekday weekday{std::chrono::sys_days(date)};
  return fmt::format("{}年{}月{}日 {}", static_cast<int>(date.year()),
                     static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                     weekdays[weekday.c_encoding()]);
}

}  // namespace nomely
