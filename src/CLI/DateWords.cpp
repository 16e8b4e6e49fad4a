#include "CLI/DateWords.h"

#include <algorithm>
#include <array>

#include "Core/Extensions/LatestDay.h"
#include "Core/Extensions/TextNumbers.h"
#include "Platform/Text/Ascii.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

struct Word {
  std::string_view text;
  int value;
};

constexpr std::array nearDays{Word{"today", 0}, Word{"今天", 0},  Word{"yesterday", -1},
                              Word{"昨天", -1}, Word{"前天", -2}, Word{"tomorrow", 1},
                              Word{"明天", 1}};

// From 周日, which is 0.
constexpr std::array weekdays{
    Word{"周一", 1},     Word{"周二", 2},      Word{"周三", 3},     Word{"周四", 4},
    Word{"周五", 5},     Word{"周六", 6},      Word{"周日", 0},     Word{"周天", 0},
    Word{"mon", 1},      Word{"tue", 2},       Word{"wed", 3},      Word{"thu", 4},
    Word{"fri", 5},      Word{"sat", 6},       Word{"sun", 0},      Word{"monday", 1},
    Word{"tuesday", 2},  Word{"wednesday", 3}, Word{"thursday", 4}, Word{"friday", 5},
    Word{"saturday", 6}, Word{"sunday", 0}};

template <typename Words>
std::optional<int> valueOf(const Words& words, std::string_view text) {
  const auto found = std::ranges::find(words, text, &Word::text);
  if (found == words.end()) return std::nullopt;
  return found->value;
}

Day latestWeekday(int weekday, Day today) {
  constexpr int week = 7;
  const std::chrono::weekday now{std::chrono::sys_days(today.civil())};
  return today.plusDays(-((static_cast<int>(now.c_encoding()) - weekday + week) % week));
}

std::string shortWeekday(std::string_view text) {
  for (const std::string_view prefix : {"星期", "礼拜"})
    if (text.starts_with(prefix)) return "周" + std::string(text.substr(prefix.size()));
  return std::string(text);
}

std::optional<unsigned> upTo(std::string_view digits, unsigned most) {
  const bool isShort = !digits.empty() && digits.size() <= 2 && digits.front() != '+';
  const auto value = isShort ? parseDecimal(digits) : std::nullopt;
  if (!value || *value < 1 || *value > most) return std::nullopt;
  return static_cast<unsigned>(*value);
}

// "3-1"
std::optional<Day> latestMonthAndDay(std::string_view text, Day today) {
  const std::size_t dash = text.find('-');
  if (dash == std::string_view::npos) return std::nullopt;
  const auto month = upTo(text.substr(0, dash), 12);
  const auto day = upTo(text.substr(dash + 1), 31);
  if (!month || !day) return std::nullopt;
  return latestDay(*month, *day, today);
}

// "-3", "3天前", "3 days ago"
std::optional<Day> daysAgo(std::string_view text, Day today) {
  constexpr std::int64_t most = 366 * 1000;
  std::string_view digits = text;
  bool isAgo = false;
  for (const std::string_view ending : {"天前", " days ago", " day ago"})
    if (digits.ends_with(ending)) {
      digits.remove_suffix(ending.size());
      isAgo = true;
      break;
    }
  if (!isAgo && digits.starts_with('-')) {
    digits.remove_prefix(1);
    isAgo = true;
  }
  if (digits.starts_with('+') || digits.starts_with('-')) return std::nullopt;
  const auto count = parseDecimal(digits);
  if (!isAgo || !count || *count > most) return std::nullopt;
  return today.plusDays(-static_cast<int>(*count));
}

}  // namespace

std::optional<Day> DateWords::day(std::string_view text, Day today) {
  if (const auto exact = Day::parse(text)) return exact;
  const std::string lowered = loweredAscii(trimHorizontal(text));
  if (const auto days = valueOf(nearDays, lowered)) return today.plusDays(*days);
  if (const auto weekday = valueOf(weekdays, shortWeekday(lowered)))
    return latestWeekday(*weekday, today);
  if (const auto ago = daysAgo(lowered, today)) return ago;
  return latestMonthAndDay(lowered, today);
}

const std::vector<std::string>& DateWords::all() {
  static const std::vector<std::string> words = [] {
    std::vector<std::string> made;
    made.reserve(nearDays.size() + weekdays.size());
    for (const Word& word : nearDays) made.emplace_back(word.text);
    for (const Word& word : weekdays) made.emplace_back(word.text);
    return made;
  }();
  return words;
}

}  // namespace nomely
