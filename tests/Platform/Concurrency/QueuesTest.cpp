#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

#include "Platform/Concurrency/RunLoop.h"
#include "Platform/Concurrency/SerialQueue.h"
#include "Platform/Concurrency/Timers.h"
#include "Support/Deadline.h"
#include "Support/ForkedRun.h"
#include "Support/Matchers.h"

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

TEST(SerialQueueTest, JobsRunInTheOrderOfSubmission) {
  SerialQueue queue("q");
  std::vector<int> order;  // guarded by the queue alone
  std::vector<int> expected;
  std::promise<void> running;
  std::promise<void> go;
  queue.async([&] {
    running.set_value();
    inTime(go);
  });
  inTime(running);
  for (int i = 0; i < 50; ++i) {
    queue.async([&order, i] { order.push_back(i); });
    expected.push_back(i);
  }
  go.set_value();
  queue.sync([&] { order.push_back(-1); });
  expected.push_back(-1);
  EXPECT_EQ(order, expected);
}

TEST(SerialQueueTest, AJobWakesAWorkerThatWaits) {
  std::promise<pid_t> first;
  std::promise<void> second;
  SerialQueue queue("q");
  queue.async([&] { first.set_value(::gettid()); });
  awaitSleep(inTime(first));
  queue.async([&] { second.set_value(); });
  inTime(second);
}

TEST(SerialQueueTest, OneJobAtATimeWhateverTheThread) {
  SerialQueue queue("q");
  int count = 0;
  std::atomic<int> inside = 0;
  std::atomic<bool> overlapped = false;
  const auto job = [&] {
    if (inside.fetch_add(1) != 0) overlapped = true;
    ++count;
    inside.fetch_sub(1);
  };
  {
    std::vector<std::jthread> threads;
    for (int t = 0; t < 4; ++t)
      threads.emplace_back([&] {
        for (int i = 0; i < 200; ++i) {
          if (i % 4 == 0)
            queue.async(job);
          else
            queue.sync(job);
        }
      });
  }
  EXPECT_EQ(queue.sync([&] { return count; }), 800);
  EXPECT_FALSE(overlapped);
}

TEST(SerialQueueTest, SyncRunsOnItsCallersThreadWhichIsTheQueuesMeanwhile) {
  SerialQueue outer("outer");
  SerialQueue inner("inner");
  const auto current = [&] { return std::pair(outer.isCurrent(), inner.isCurrent()); };
  EXPECT_EQ(outer.sync([] { return std::this_thread::get_id(); }), std::this_thread::get_id());
  outer.sync([&] {
    inner.sync([&] {
      EXPECT_EQ(current(), std::pair(true, true));
      std::jthread([&] { EXPECT_EQ(current(), std::pair(false, false)); }).join();
    });
    EXPECT_EQ(current(), std::pair(true, false));
  });
  EXPECT_EQ(current(), std::pair(false, false));
  std::promise<std::pair<bool, bool>> inJob;
  inner.async([&] { inJob.set_value(current()); });
  EXPECT_EQ(inTime(inJob), std::pair(false, true));
}

TEST(SerialQueueTest, ExceptionsLeaveTheQueueUsable) {
  SerialQueue queue("the queue");
  EXPECT_THROW(queue.sync([] { throw std::out_of_range("sync"); }), std::out_of_range);
  EXPECT_FALSE(queue.isCurrent());
  testing::internal::CaptureStderr();
  queue.async([] { throw std::runtime_error("in the background"); });
  queue.async([] { throw 1; });
  EXPECT_EQ(queue.sync([] { return 1; }), 1);
  const std::string log = testing::internal::GetCapturedStderr();
  EXPECT_THAT(log, HasSubstr("the queue): in the background"));
  EXPECT_THAT(log, HasSubstr("unknown exception"));
}

TEST(SerialQueueTest, DestructionRunsEveryJob) {
  int done = 0;
  const auto held = std::make_shared<int>();
  {
    SerialQueue queue("q");
    for (int i = 0; i < 100; ++i) queue.async([&done, held] { ++done; });
    queue.async([&] { queue.async([&] { ++done; }); });
  }
  EXPECT_EQ(done, 101);
  EXPECT_EQ(held.use_count(), 1);
}

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

}  // namespace
}  // namespace nomely::test
