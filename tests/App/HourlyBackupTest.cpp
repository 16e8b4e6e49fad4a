#include <stdexcept>

#include <gmock/gmock.h>

#include "App/HourlyBackup.h"
#include "Platform/Concurrency/RunLoop.h"
#include "Support/ManualTimers.h"

namespace nomely::test {
namespace {

using namespace std::chrono_literals;

TEST(HourlyBackup, EveryHourUntilItEnds) {
  ManualClock clock;
  ManualTimers timers(clock);
  RunLoop loop;
  JobPool jobs;
  std::atomic<int> made = 0;
  std::atomic<bool> ended = false;
  {
    HourlyBackup hourly({timers, jobs, loop}, [&](const std::stop_token& stop) {
      if (++made == 1) throw std::runtime_error("no room");
      while (made == 2 && !stop.stop_requested()) std::this_thread::yield();
      ended = stop.stop_requested();
    });
    hourly.start();
    const auto pass = [&](Moment::duration time, int expected) {
      timers.advance(std::chrono::duration_cast<std::chrono::milliseconds>(time));
      for (int i = 0; i < 10'000 && (i == 0 || made < expected); ++i)
        (void)loop.runUntil([] { return false; }, 1ms);
      EXPECT_EQ(made, expected);
    };
    pass(59min, 0);
    pass(1min, 1);
    ASSERT_TRUE(loop.runUntil([&] { return timers.waiting() == 1; }, 10s));
    pass(1h, 2);
    pass(5h, 2);  // the second still runs
  }
  EXPECT_TRUE(ended);
  EXPECT_EQ(timers.waiting(), 0U);
}

}  // namespace
}  // namespace nomely::test
