#include <atomic>
#include <fstream>
#include <numeric>
#include <thread>

#include <gtest/gtest.h>
#include <unistd.h>

#include "Core/Storage/WriteError.h"
#include "Platform/Files/FileError.h"
#include "Support/ErrorKind.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

namespace fs = std::filesystem;

class GateTest : public StoreTest {
 protected:
  template <typename Body>
  decltype(auto) write(Body&& body) {
    return context.write(std::forward<Body>(body));
  }

  // A thread that does `job`, once that waits for something.
  static std::jthread waitingThread(std::function<void()> job) {
    std::atomic<pid_t> started = 0;
    std::jthread thread([&started, job = std::move(job)] {
      started = ::gettid();
      job();
    });
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (started == 0 || !sleeps(started)) {
      if (std::chrono::steady_clock::now() > deadline) {
        ADD_FAILURE() << "it never waited";
        break;
      }
      std::this_thread::yield();
    }
    return thread;
  }

  DataWriteCoordinator& gate = DataWriteCoordinator::shared(folder.path());

 private:
  static bool sleeps(pid_t thread) {
    std::ifstream stream("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string text((std::istreambuf_iterator<char>(stream)), {});
    return text.substr(text.rfind(')') + 1).starts_with(" S");
  }
};

TEST_F(GateTest, IsOneHoweverTheRootIsSpelt) {
  const fs::path base = folder.path();
  fs::create_directories(base / "data/sub");
  fs::create_directory_symlink("data", base / "link");
  fs::create_directory_symlink(base, base / "data/loop");
  const DataWriteCoordinator* const one = &DataWriteCoordinator::shared(base / "data");
  for (const char* spelling : {"data/", "data//", "data/.", "data/sub/..", "link", "link/",
                               "./data", "link/sub/../../data", "data/loop/link/."})
    EXPECT_EQ(&DataWriteCoordinator::shared(base / spelling), one) << spelling;
  EXPECT_NE(&DataWriteCoordinator::shared(base / "data/sub"), one);

  const DataWriteCoordinator* const before = &DataWriteCoordinator::shared(base / "link/later");
  EXPECT_EQ(&DataWriteCoordinator::shared(base / "data/later/"), before);
  fs::create_directory(base / "data/later");
  EXPECT_EQ(&DataWriteCoordinator::shared(base / "data/later"), before) << "now that it is there";
}

TEST_F(GateTest, NestedWritesRunInPlaceAndErrorsPassThrough) {
  const auto outer = std::this_thread::get_id();
  const int sum = write([&] {
    return 1 + write([&] {
             EXPECT_EQ(std::this_thread::get_id(), outer);
             return write([] { return 2; });
           });
  });
  EXPECT_EQ(sum, 3);
  struct Own {};
  EXPECT_THROW(write([&] { write([] { throw Own(); }); }), Own);
  EXPECT_EQ(write([] { return 4; }), 4) << "the gate opens again";
}

TEST_F(GateTest, WritersGetInOneAtATimeInTheOrderInWhichTheyCame) {
  constexpr int count = 6;
  std::vector<int> order;
  std::vector<std::jthread> threads;
  write([&] {
    for (int i = 0; i < count; ++i)
      threads.push_back(waitingThread([&, i] { write([&] { order.push_back(i); }); }));
    EXPECT_TRUE(order.empty());
  });
  // One that comes over and over gets in behind those that wait, not before them.
  for (int i = 0; i < 100; ++i) write([&] { EXPECT_EQ(order.size(), std::size_t{count}); });
  threads.clear();
  std::vector<int> expected(count);
  std::iota(expected.begin(), expected.end(), 0);
  EXPECT_EQ(order, expected);
}

TEST_F(GateTest, FreezingStopsWritesAndNotReads) {
  const Day today = day("2026-03-01");
  const Memo memo = store.createMemo(today, {.body = "before"});
  const std::string before = treeOf(folder.path());
  const auto refusal = [&](const std::function<void()>& body) { return kindOf<WriteError>(body); };
  bool ran = false;
  std::optional<WriteError::Kind> ofWaiting;
  std::jthread waiting;
  write([&] {
    waiting = waitingThread([&] { ofWaiting = refusal([&] { write([&] { ran = true; }); }); });
    gate.freeze();
    EXPECT_EQ(refusal([&] { write([&] { ran = true; }); }), WriteError::Kind::maintenance);
  });
  waiting.join();
  EXPECT_EQ(ofWaiting, WriteError::Kind::maintenance);
  EXPECT_FALSE(ran);
  EXPECT_EQ(refusal([&] { (void)store.createMemo(today, {.body = "after"}); }),
            WriteError::Kind::maintenance);
  EXPECT_EQ(store.listMemos(today), std::vector{memo});
  EXPECT_EQ(treeOf(folder.path()), before);
}

TEST_F(GateTest, AMissingRootIsMadeForItsOwnerAloneAndAFileInItsPlaceIsReported) {
  const auto create = [&](const fs::path& root) {
    const StoreContext other{{root}, FileManager(posixFileSystem()), clock};
    (void)DayStore(other).createMemo(day("2026-03-01"), {.body = "first"});
  };
  create(folder.path() / "a/b");
  EXPECT_EQ(context.files.attributes(folder.path() / "a/b")->permissions, 0700U);
  EXPECT_NE(context.files.attributes(folder.path() / "a")->permissions, 0700U);
  writeFile(folder.path() / "file", "mine");
  EXPECT_EQ(kindOf<FileError>([&] { create(folder.path() / "file"); }),
            FileError::Kind::notADirectory);
  EXPECT_EQ(readFile(folder.path() / "file"), "mine");
}

}  // namespace
}  // namespace nomely::test
