#pragma once

#include "Platform/Time/Moment.h"

namespace nomely {

// A moment as the clock on the wall shows it: proleptic Gregorian date, time of day, and how far
// the zone is ahead of UTC. The zone is the machine's as it stood when first asked.
struct LocalTime {
  int year = 1970;
  int month = 1;  // 1...12
  int day = 1;    // 1...31
  int hour = 0;
  int minute = 0;
  int second = 0;
  int millisecond = 0;
  int offset = 0;  // seconds east of UTC; ignored by `moment`

  [[nodiscard]] static LocalTime of(Moment moment);
  // The moment at which the local clock shows this: the earlier one of a time that a clock change
  // repeats; where one skips the time, as long after the change as the time lies in the gap.
  [[nodiscard]] Moment moment() const;
};

}  // namespace nomely
