#pragma once

#include <chrono>

namespace nomely {

// A point in time, to the microsecond, counted from 1970-01-01T00:00:00Z without leap seconds; wide
// enough for every year with four digits. Which civil day it falls on depends on a time zone: see
// Day and LocalTime.
using Moment = std::chrono::sys_time<std::chrono::microseconds>;

}  // namespace nomely
