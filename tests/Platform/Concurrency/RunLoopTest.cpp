#include <functional>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "Platform/Concurrency/RunLoop.h"
#include "Support/Deadline.h"
#include "Support/ForkedRun.h"

namespace nomely::test {
namespace {

using namespace std::chrono_literals;

TEST(RunLoopTest, RunsJobsInOrderUntilStoppedAndLogsWhatEscapes) {
  RunLoop loop;
  std::vector<int> order;
  testing::internal::CaptureStderr();
  loop.post([&] {
    order.push_back(1);
    throw std::runtime_error("job broke");
  });
  loop.post([&] {
    order.push_back(2);
    loop.post([&] { order.push_back(3); });
  });
  loop.stop();
  loop.run();
  EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("job broke"));
  EXPECT_EQ(order, (std::vector{1, 2})) << "what came after the stop waits";
  EXPECT_TRUE(loop.runUntil([&] { return order.size() == 3; }, longestWait));
}

// A loop that is not woken ends with its process.
TEST(RunLoopTest, APostWakesWhoWaitsOrIsAboutToAndRunsOnItsThread) {
  const ChildEnd end = runInChild([] {
    RunLoop loop;
    EXPECT_TRUE(loop.isCurrent());
    bool isWoken = false;
    loop.post([&] { isWoken = true; });
    EXPECT_TRUE(loop.runUntil([&] { return isWoken; }, 24h));

    bool ranOnIt = false;
    std::jthread runner = waitingThread([&] { loop.run(); });
    EXPECT_FALSE(loop.isCurrent());
    loop.post([&] { ranOnIt = loop.isCurrent(); });
    loop.stop();
    runner.join();
    EXPECT_TRUE(ranOnIt);

    isWoken = false;
    runner = waitingThread([&] { EXPECT_TRUE(loop.runUntil([&] { return isWoken; }, 24h)); });
    loop.post([&] { isWoken = true; });
  });
  EXPECT_EQ(end, ChildEnd{});
}

TEST(RunLoopTest, RunUntilItsConditionOrItsLimit) {
  RunLoop loop;
  EXPECT_TRUE(loop.runUntil([] { return true; }, 0ms));
  const std::function<void()> again = [&] { loop.post(again); };
  loop.post(again);
  EXPECT_FALSE(loop.runUntil([] { return false; }, 5ms)) << "with jobs that never end";
}

}  // namespace
}  // namespace nomely::test
