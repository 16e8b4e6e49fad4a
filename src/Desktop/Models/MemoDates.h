#pragma once

#include <QString>

#include "Platform/Time/Day.h"
#include "Platform/Time/Moment.h"

namespace nomely {

// Days and moments as lists show them, seen from `today`. Any thread.
namespace MemoDates {

// "今天", "昨天", "3月1日 周日", in other years "2025年3月1日".
[[nodiscard]] QString dayName(Day day, Day today);
// The same with the time of day: "昨天 14:05".
[[nodiscard]] QString momentName(Moment moment, Day today);

}  // namespace MemoDates

}  // namespace nomely
