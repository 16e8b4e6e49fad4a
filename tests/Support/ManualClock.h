#pragma once

#include <atomic>
#include <optional>
#include <string_view>

#include "Core/Extensions/DateFormatters.h"
#include "Platform/Time/Clock.h"

namespace nomely::test {

// A clock that stands still until it is told. Safe on any thread.
class ManualClock final : public Clock {
 public:
  // Local time, "2026-03-01 09:30:05".
  explicit ManualClock(std::string_view localTime = "2026-03-01 09:30:05") { set(localTime); }

  void set(std::string_view localTime) {
    now_ = DateFormatters::isoDateTime.parse(localTime).value();
  }
  void advance(Moment::duration by) { now_ = now_.load() + by; }

  [[nodiscard]] Moment now() const override { return now_; }

 private:
  std::atomic<Moment> now_{};
};

[[nodiscard]] inline Day day(std::string_view text) {
  return Day::parse(text).value();
}

}  // namespace nomely::test
