#pragma once

#include "Platform/Time/Day.h"
#include "Platform/Time/Moment.h"

namespace nomely {

// Where the present comes from. Safe on any thread.
class Clock {
 public:
  virtual ~Clock() = default;
  [[nodiscard]] virtual Moment now() const = 0;

  [[nodiscard]] Day today() const { return Day::of(now()); }
};

class SystemClock final : public Clock {
 public:
  [[nodiscard]] Moment now() const override {
    return std::chrono::time_point_cast<Moment::duration>(std::chrono::system_clock::now());
  }
};

}  // namespace nomely
