#include <atomic>
#include <fstream>
#include <latch>
#include <numeric>
#include <thread>

#include <gtest/gtest.h>
#include <sys/stat.h>
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
  DataWriteCoordinator& gate = store.writes();
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
}

TEST_F(GateTest, IsOneBeforeAndAfterTheRootIsThere) {
  fs::create_directory_symlink(folder.path(), folder.path() / "link");
  const DataWriteCoordinator* const before =
      &DataWriteCoordinator::shared(folder.path() / "link/later");
  EXPECT_EQ(&DataWriteCoordinator::shared(folder.path() / "later/"), before);
  fs::create_directory(folder.path() / "later");
  EXPECT_EQ(&DataWriteCoordinator::shared(folder.path() / "later"), before);
}

TEST_F(GateTest, NestedWritesRunInPlaceAndErrorsPassThrough) {
  const auto outer = std::this_thread::get_id();
  const int sum = gate.write(context.files, [&] {
    return 1 + gate.write(context.files, [&] {
      EXPECT_EQ(std::this_thread::get_id(), outer);
      return gate.write(context.files, [] { return 2; });
    });
  });
  EXPECT_EQ(sum, 3);
  struct Own {};
  EXPECT_THROW(gate.write(context.files, [&] { gate.write(context.files, [] { throw Own(); }); }),
               Own);
  EXPECT_EQ(gate.write(context.files, [] { return 4; }), 4) << "the gate opens again";
}

// Whether that thread of this process is blocked.
bool sleeps(pid_t thread) {
  std::ifstream stream("/proc/self/task/" + std::to_string(thread) + "/stat");
  std::string text((std::istreambuf_iterator<char>(stream)), {});
  return text.substr(text.rfind(')') + 1).starts_with(" S");
}

TEST_F(GateTest, WritersGetInInTheOrderInWhichTheyCame) {
  constexpr int count = 6;
  std::vector<int> order;
  std::vector<std::jthread> threads;
  gate.write(context.files, [&] {
    for (int i = 0; i < count; ++i) {
      std::atomic<pid_t> came = 0;
      threads.emplace_back([&, i] {
        came = ::gettid();
        gate.write(context.files, [&] { order.push_back(i); });
      });
      const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
      while (came == 0 || !sleeps(came)) {
        ASSERT_LT(std::chrono::steady_clock::now(), deadline);
        std::this_thread::yield();
      }
    }
    EXPECT_TRUE(order.empty());
  });
  threads.clear();
  std::vector<int> expected(count);
  std::iota(expected.begin(), expected.end(), 0);
  EXPECT_EQ(order, expected);
}

TEST_F(GateTest, ABusyWriterDoesNotKeepOthersOut) {
  constexpr int enough = 1'000'000;
  std::atomic<bool> gotIn = false;
  std::latch started(1);
  std::jthread other([&] {
    started.count_down();
    gate.write(context.files, [&] { gotIn = true; });
  });
  started.wait();
  int writes = 0;
  while (!gotIn && writes < enough) gate.write(context.files, [&] { ++writes; });
  EXPECT_LT(writes, enough);
}

TEST_F(GateTest, OneWriterAtATime) {
  constexpr int each = 200;
  int total = 0;
  {
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i)
      threads.emplace_back([&] {
        for (int k = 0; k < each; ++k) gate.write(context.files, [&] { ++total; });
      });
  }
  EXPECT_EQ(total, 4 * each);
}

TEST_F(GateTest, FreezingStopsWritesAndNotReads) {
  const Day today = day("2026-03-01");
  const Memo memo = store.createMemo(today, {.body = "before"});
  const std::string before = treeOf(folder.path());
  bool nestedRan = false;
  gate.write(context.files, [&] {
    gate.freeze();
    EXPECT_EQ(kindOf<WriteError>([&] { gate.write(context.files, [&] { nestedRan = true; }); }),
              WriteError::Kind::maintenance);
  });
  EXPECT_FALSE(nestedRan);
  EXPECT_EQ(kindOf<WriteError>([&] { (void)store.createMemo(today, {.body = "after"}); }),
            WriteError::Kind::maintenance);
  EXPECT_EQ(kindOf<WriteError>([&] { store.deleteMemo(today, memo); }),
            WriteError::Kind::maintenance);
  EXPECT_EQ(store.listMemos(today), std::vector{memo});
  EXPECT_EQ(treeOf(folder.path()), before);
}

TEST_F(GateTest, AWriterThatWaitsWhenTheGateFreezesIsRefusedToo) {
  std::optional<WriteError::Kind> refusal;
  std::jthread waiting;
  gate.write(context.files, [&] {
    std::atomic<pid_t> came = 0;
    waiting = std::jthread([&] {
      came = ::gettid();
      refusal = kindOf<WriteError>([&] { gate.write(context.files, [] {}); });
    });
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (came == 0 || !sleeps(came)) {
      ASSERT_LT(std::chrono::steady_clock::now(), deadline);
      std::this_thread::yield();
    }
    gate.freeze();
  });
  waiting.join();
  EXPECT_EQ(refusal, WriteError::Kind::maintenance);
}

TEST_F(GateTest, AMissingRootIsMadeForItsOwnerAlone) {
  const StoreContext inner{{folder.path() / "a/b"}, FileManager(posixFileSystem()), clock};
  (void)DayStore(inner).createMemo(day("2026-03-01"), {.body = "first"});
  EXPECT_EQ(context.files.attributes(inner.paths.rootURL)->permissions, 0700U);
  EXPECT_NE(context.files.attributes(folder.path() / "a")->permissions, 0700U);
}

TEST_F(GateTest, ARootThatIsAFileIsReported) {
  writeFile(folder.path() / "file", "mine");
  const StoreContext wrong{{folder.path() / "file"}, FileManager(posixFileSystem()), clock};
  EXPECT_EQ(kindOf<FileError>(
                [&] { (void)DayStore(wrong).createMemo(day("2026-03-01"), {.body = "lost?"}); }),
            FileError::Kind::notADirectory);
  EXPECT_EQ(readFile(folder.path() / "file"), "mine");
}

}  // namespace
}  // namespace nomely::test
