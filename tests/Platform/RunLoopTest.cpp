#include <functional>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "Platform/Concurrency/RunLoop.h"

namespace nomely::test {
namespace {

using namespace std::chrono_literals;

TEST(RunLoopTest, RunsJobsInOrderUntilStopped) {
  RunLoop loop;
  std::vector<int> order;
  loop.post([&] { order.push_back(1); });
  loop.post([&] {
    order.push_back(2);
    loop.post([&] { order.push_back(3); });
  });
  loop.stop();
  loop.run();
  EXPECT_EQ(order, (std::vector{1, 2})) << "what came after the stop waits";
  EXPECT_TRUE(loop.runUntil([&] { return order.size() == 3; }, 30s));
}

TEST(RunLoopTest, MainThreadIsTheOneThatRunsIt) {
  RunLoop loop;
  EXPECT_TRUE(loop.isCurrent());
  std::jthread([&] {
    EXPECT_FALSE(loop.isCurrent());
    bool current = false;
    loop.post([&] { current = loop.isCurrent(); });
    loop.stop();
    loop.run();
    EXPECT_TRUE(current);
  }).join();
  EXPECT_FALSE(loop.isCurrent());
}

TEST(RunLoopTest, RunUntilItsConditionOrItsLimit) {
  RunLoop loop;
  EXPECT_TRUE(loop.runUntil([] { return true; }, 0ms));
  bool posted = false;
  const std::jthread poster([&] { loop.post([&] { posted = true; }); });
  EXPECT_TRUE(loop.runUntil([&] { return posted; }, 30s));
  const std::function<void()> again = [&] { loop.post(again); };
  loop.post(again);
  EXPECT_FALSE(loop.runUntil([] { return false; }, 5ms)) << "with jobs that never end";
}

TEST(RunLoopTest, EscapedExceptionIsLogged) {
  RunLoop loop;
  testing::internal::CaptureStderr();
  loop.post([] { throw std::runtime_error("job broke"); });
  loop.stop();
  loop.run();
  EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("job broke"));
}

}  // namespace
}  // namespace nomely::test
