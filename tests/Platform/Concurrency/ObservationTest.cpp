#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "Platform/Concurrency/NotificationCenter.h"
#include "Platform/Concurrency/Observable.h"

namespace nomely::test {
namespace {

TEST(ObservableTest, TellsObserversInOrder) {
  Observable<int> value(1);
  std::string seen;
  const Subscription a = value.observe([&](int now) { seen += "a" + std::to_string(now); });
  {
    const Subscription b = value.observe([&](int now) { seen += "b" + std::to_string(now); });
    value.set(2);
  }
  value.set(3);
  value.set(3);
  value.setIfChanged(3);
  EXPECT_EQ(seen, "a2b2a3a3");
}

TEST(ObservableTest, ChangesDuringANotification) {
  Observable<int> value;
  std::string seen;
  Subscription self;
  Subscription later;
  Subscription added;
  self = value.observe([&](int) {
    seen += "s";
    self.cancel();
    later.cancel();
    added = value.observe([&](int) { seen += "n"; });
  });
  later = value.observe([&](int) { seen += "l"; });
  const Subscription last = value.observe([&](int) { seen += "z"; });
  value.set(1);
  EXPECT_EQ(seen, "sz");
  value.set(2);
  EXPECT_EQ(seen, "szzn");
}

TEST(ObservableTest, SubscriptionsOutliveIt) {
  auto value = std::make_unique<Observable<int>>(1);
  Subscription subscription = value->observe([](int) {});
  value.reset();
  Subscription moved = std::move(subscription);
  moved = Subscription();
}

TEST(NotificationCenterTest, ReachesTheObserversOfThatName) {
  NotificationCenter center;
  std::string seen;
  Subscription added;
  Subscription first =
      center.observe("saved", [&](const std::string& text) { seen += "1" + text; });
  const Subscription other = center.observe("deleted", [&](const std::string&) { seen += "x"; });
  const Subscription second = center.observe("saved", [&](const std::string& text) {
    seen += "2" + text;
    first.cancel();
    if (text == "a") added = center.observe("saved", [&](const std::string&) { seen += "3"; });
  });
  center.post("saved", "a");
  center.post("saved", "b");
  EXPECT_EQ(seen, "1a2a2b3");
}

TEST(NotificationCenterTest, ThreadsPostAndSubscribeAtOnce) {
  NotificationCenter center;
  std::atomic<int> calls = 0;
  {
    const Subscription kept = center.observe("n", [&](const std::string&) { ++calls; });
    std::vector<std::jthread> threads;
    for (int t = 0; t < 3; ++t)
      threads.emplace_back([&] {
        for (int i = 0; i < 200; ++i) {
          const Subscription brief = center.observe("n", [](const std::string&) {});
          center.post("n");
        }
      });
    threads.clear();
  }
  EXPECT_EQ(calls, 600);
}

}  // namespace
}  // namespace nomely::test
