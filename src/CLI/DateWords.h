#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Time/Day.h"

namespace nomely {

// Days as people write them. Pure.
namespace DateWords {

// "2026-03-01"; "3-1", the latest such day; today/今天, yesterday/昨天, 前天, tomorrow/明天; a
// weekday (周五, 星期五, fri, friday), the latest one, today included; "-3", "3天前", "3 days ago".
// Letters in either case. Absent for anything else.
[[nodiscard]] std::optional<Day> day(std::string_view text, Day today);

// The words among them that stand for a day by themselves, for completion.
[[nodiscard]] const std::vector<std::string>& all();

}  // namespace DateWords

}  // namespace nomely
