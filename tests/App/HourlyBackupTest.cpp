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
  HourlyBackup hourly({timers, jobs, loop}, [&](const std::stop_token& stop) {
    if (++made == 1) throw std::runtime_error("no room");
    while (!stop.stop_requested()) std::this_thread::yield();
  });
  hourly.start();
  for (const auto& [time, expected] : {std::pair(59min, 0), {1min, 1}, {60min, 2}, {300min, 2}}) {
    timers.advance(time);
    for (int i = 0; i < 10'000 && (i == 0 || made < expected || (made == 1 && i < 20)); ++i)
      (void)loop.runUntil([] { return false; }, 1ms);
    EXPECT_EQ(made, expected);
  }
}

}  // namespace
}  // namespace nomely::test
