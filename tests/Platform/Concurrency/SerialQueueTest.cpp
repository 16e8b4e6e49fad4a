#include <atomic>
#include <future>
#include <memory>
#include <stdexcept>
#include <vector>

#include <gmock/gmock.h>

#include "Platform/Concurrency/SerialQueue.h"
#include "Support/Deadline.h"

namespace nomely::test {
namespace {

using testing::HasSubstr;

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

}  // namespace
}  // namespace nomely::test
