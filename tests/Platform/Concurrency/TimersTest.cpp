#include <gtest/gtest.h>

#include "Platform/Concurrency/Timers.h"
#include "Support/Deadline.h"
#include "Support/ManualTimers.h"

namespace nomely::test {
namespace {

using namespace std::chrono_literals;

TEST(TimersTest, CallsComeByTheirTimeAndAreCancelled) {
  const auto timers = makeSystemTimers();
  std::string order;
  std::promise<void> done;
  const auto note = [&](char name) { return [&order, name] { order += name; }; };
  const auto last = timers->after(40ms, [&] { done.set_value(); });
  const auto third = timers->after(30ms, note('c'));
  const auto first = timers->after(5ms, note('a'));
  const auto second = timers->after(5ms, [&] {
    order += 'b';
    throw std::runtime_error("ends nothing");
  });
  auto cancelled = timers->after(6ms, note('x'));
  cancelled.reset();
  done.get_future().wait_for(longestWait);
  EXPECT_EQ(order, "abc");
}

TEST(TimersTest, TimersMayBeMadeAndOutlivedByTheirCalls) {
  Timers::Timer inner;
  Timers::Timer never;
  {
    const auto timers = makeSystemTimers();
    std::promise<void> done;
    const auto outer =
        timers->after(0ms, [&] { inner = timers->after(0ms, [&] { done.set_value(); }); });
    ASSERT_EQ(done.get_future().wait_for(longestWait), std::future_status::ready);
    never = timers->after(24h, [] { FAIL(); });
  }
  never.reset();
}

TEST(TimersTest, ManualOnesPassTheTimeOfTheirClock) {
  ManualClock clock("2026-03-01 09:00:00");
  ManualTimers timers(clock);
  std::vector<std::string> seen;
  Timers::Timer timer;
  const std::function<void()> tick = [&] {
    seen.push_back(DateFormatters::isoDateTime.format(clock.now()).substr(11));
    timer = timers.after(30min, tick);
  };
  timer = timers.after(30min, tick);
  timers.advance(100min);
  EXPECT_EQ(seen, (std::vector<std::string>{"09:30:00", "10:00:00", "10:30:00"}));
  timer.reset();
  EXPECT_EQ(timers.waiting(), 0);
}

}  // namespace
}  // namespace nomely::test
