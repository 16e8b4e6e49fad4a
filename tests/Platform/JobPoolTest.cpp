#include <atomic>
#include <future>
#include <stdexcept>
#include <string>

#include <gmock/gmock.h>

#include "Platform/Concurrency/JobPool.h"
#include "Support/Deadline.h"

namespace nomely::test {
namespace {

using testing::HasSubstr;

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

TEST(JobPoolTest, EscapedExceptionIsLogged) {
  testing::internal::CaptureStderr();
  std::promise<void> done;
  {
    JobPool pool(1);
    pool.submit([](const std::stop_token&) { throw std::runtime_error("job broke"); });
    pool.submit([&](const std::stop_token&) { done.set_value(); });
    inTime(done);
  }
  EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("job broke"));
}

TEST(JobPoolTest, ParallelForVisitsEachOnce) {
  JobPool pool(3);
  for (const std::size_t count : {0U, 1U, 2U, 1000U}) {
    SCOPED_TRACE(count);
    std::vector<std::atomic<int>> visits(count);
    pool.parallelFor(count, [&](std::size_t i) { ++visits[i]; });
    for (const auto& visit : visits) EXPECT_EQ(visit, 1);
  }
}

TEST(JobPoolTest, ParallelForInsideAJobOfTheSamePool) {
  JobPool pool(1);
  std::promise<int> sum;
  pool.submit([&](const std::stop_token&) {
    std::atomic<int> total = 0;
    pool.parallelFor(10, [&](std::size_t i) { total += static_cast<int>(i); });
    sum.set_value(total);
  });
  EXPECT_EQ(inTime(sum), 45);
}

TEST(JobPoolTest, ParallelForStopsAtTheFirstException) {
  JobPool pool(2);
  std::atomic<int> visits = 0;
  EXPECT_THROW(pool.parallelFor(100'000,
                                [&](std::size_t i) {
                                  ++visits;
                                  if (i == 3) throw std::out_of_range("third");
                                }),
               std::out_of_range);
  EXPECT_LT(visits, 100'000);
}

}  // namespace
}  // namespace nomely::test
