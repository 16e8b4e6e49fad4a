#include <algorithm>
#include <atomic>
#include <future>
#include <stdexcept>
#include <string>

#include <gmock/gmock.h>

#include "Platform/Concurrency/JobGroup.h"
#include "Platform/Concurrency/JobPool.h"
#include "Support/Deadline.h"
#include "Support/ForkedRun.h"

namespace nomely::test {
namespace {

TEST(JobPoolTest, HigherPriorityFirstThenTheOrderOfSubmission) {
  std::string order;
  std::promise<void> began;
  std::promise<void> go;
  std::promise<void> last;
  JobPool pool(1);
  pool.submit([&](const std::stop_token&) {
    began.set_value();
    inTime(go);
  });
  inTime(began);
  const auto add = [&](char name, JobPool::Priority priority) {
    pool.submit([&order, name](const std::stop_token&) { order += name; }, priority);
  };
  add('u', JobPool::Priority::utility);
  add('v', JobPool::Priority::utility);
  add('a', JobPool::Priority::userInitiated);
  add('b', JobPool::Priority::userInitiated);
  pool.submit([&](const std::stop_token&) { last.set_value(); }, JobPool::Priority::utility);
  go.set_value();
  inTime(last);
  EXPECT_EQ(order, "abuv");
}

TEST(JobPoolTest, ASubmissionWakesAThreadThatWaitsThoughAnExceptionEscaped) {
  testing::internal::CaptureStderr();
  std::promise<pid_t> first;
  std::promise<void> second;
  JobPool pool(1);
  pool.submit([&](const std::stop_token&) {
    first.set_value(::gettid());
    throw std::runtime_error("job broke");
  });
  awaitSleep(inTime(first));
  pool.submit([&](const std::stop_token&) { second.set_value(); });
  inTime(second);
  EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("job broke"));
}

TEST(JobPoolTest, DestructionStopsWhatRunsAndDropsTheRest) {
  std::atomic<bool> ended = false;
  std::atomic<bool> laterRan = false;
  {
    std::promise<void> began;
    std::promise<void> stopped;
    JobPool pool(1);
    const auto later = [&](const std::stop_token&) { laterRan = true; };
    pool.submit([&](const std::stop_token& stop) {
      const std::stop_callback callback(stop, [&] { stopped.set_value(); });
      began.set_value();
      inTime(stopped);
      pool.submit(later);
      ended = true;
    });
    pool.submit(later);
    inTime(began);
  }
  EXPECT_TRUE(ended);
  EXPECT_FALSE(laterRan);
}

TEST(JobPoolTest, ParallelForVisitsEachOnceOnAPoolsOwnThreadToo) {
  JobPool pool(1);
  for (const std::size_t count : {0U, 1U, 2U, 1000U}) {
    std::promise<std::size_t> seen;
    pool.submit([&](const std::stop_token&) {
      std::vector<std::atomic<int>> visits(count);
      pool.parallelFor(count, [&](std::size_t i) { ++visits[i]; });
      seen.set_value(static_cast<std::size_t>(
          std::ranges::count_if(visits, [](const auto& each) { return each == 1; })));
    });
    EXPECT_EQ(inTime(seen), count);
  }
}

// One that is not told of its helper's end ends with its process.
TEST(JobPoolTest, ParallelForWaitsForItsHelpers) {
  const ChildEnd end = runInChild([] {
    const pid_t caller = ::gettid();
    std::promise<void> helping;
    std::atomic<bool> helped = false;
    JobPool pool(1);
    pool.parallelFor(2, [&](std::size_t) {
      if (::gettid() == caller) return inTime(helping);
      helping.set_value();
      awaitSleep(caller);
      helped = true;
    });
    EXPECT_TRUE(helped);
  });
  EXPECT_EQ(end, ChildEnd{});
}

TEST(JobPoolTest, ParallelForStopsAtTheFirstException) {
  JobPool pool(2);
  std::atomic<int> visits = 0;
  const auto failing = [&](std::size_t i) {
    ++visits;
    if (i == 3) throw std::out_of_range("third");
  };
  EXPECT_THROW(pool.parallelFor(100'000, failing), std::out_of_range);
  EXPECT_LT(visits, 100'000);
}

// One that is not told of its job's end ends with its process.
TEST(JobGroupTest, ItsEndStopsAndWaitsForWhatRunsAndDropsTheRest) {
  const ChildEnd end = runInChild([] {
    const pid_t ending = ::gettid();
    std::atomic<bool> ended = false;
    std::atomic<bool> laterRan = false;
    std::promise<void> began;
    std::promise<void> stopped;
    std::promise<void> last;
    JobPool pool(1);
    {
      JobGroup group(pool);
      group.submit([&](const std::stop_token& stop) {
        const std::stop_callback callback(stop, [&] { stopped.set_value(); });
        began.set_value();
        inTime(stopped);
        awaitSleep(ending);
        ended = true;
      });
      group.submit([&](const std::stop_token&) { laterRan = true; });
      inTime(began);
    }
    EXPECT_TRUE(ended);
    pool.submit([&](const std::stop_token&) { last.set_value(); });
    inTime(last);
    EXPECT_FALSE(laterRan);
  });
  EXPECT_EQ(end, ChildEnd{});
}

}  // namespace
}  // namespace nomely::test
