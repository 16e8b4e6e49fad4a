#include <atomic>
#include <mutex>

#include <fmt/format.h>

#include "Core/Lifecycle/DataDirWatcher.h"
#include "Platform/Files/FileError.h"
#include "Support/Deadline.h"
#include "Support/ForkedRun.h"
#include "Support/ManualTimers.h"
#include "Support/Mounts.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

using namespace std::chrono_literals;

// The system's without delay; counts the streams and tells when a batch has been looked at.
class QuickEvents final : public FileEvents {
 public:
  std::unique_ptr<FileEventStream> watch(FileEventRequest request) override {
    ++streams;
    if (fails) throw FileError("监听", request.root, EMFILE);
    request.latency = 1ms;
    request.onBatch = [this, call = request.onBatch](const FileEventBatch& batch) {
      call(batch);
      for (const fs::path& file : batch.changed)
        if (file.filename() == "last") ++seen;
    };
    return systemFileEvents().watch(std::move(request));
  }

  std::atomic<int> streams = 0;
  std::atomic<bool> fails = false;
  std::atomic<int> seen = 0;  // files "last"
};

class DataDirWatcherTest : public testing::Test {
 protected:
  DataDirWatcherTest() { fs::create_directories(root / "2026-03-01"); }

  [[nodiscard]] std::function<void()> tells(const char* what) {
    return [this, what] {
      const std::lock_guard lock(mutex);
      told += what;
    };
  }
  void build() {
    watcher = std::make_unique<DataDirWatcher>(
        StoreContext({root}, FileManager(posixFileSystem()), clock), events, timers,
        DataDirWatcher::Observer{tells("write "), tells("replaced "), tells("missing ")});
  }
  void start() {
    build();
    watcher->start();
    watcher->rememberRoot();  // comes after the start on the queue
  }
  static void until(const std::function<bool()>& done) {
    const auto deadline = std::chrono::steady_clock::now() + longestWait;
    while (!done()) {
      if (std::chrono::steady_clock::now() > deadline) throw std::runtime_error("never came");
      std::this_thread::yield();
    }
  }
  void expectTold(const std::string& expected) {
    try {
      until([&] {
        const std::lock_guard lock(mutex);
        return told.size() >= expected.size();
      });
    } catch (const std::runtime_error&) {
    }
    const std::lock_guard lock(mutex);
    EXPECT_EQ(std::exchange(told, {}), expected);
  }
  // Whether a notification is to come of what happened so far.
  bool isNoticed() {
    const int before = events.seen;
    fs::remove(root / "2026-03-01/last");
    writeFile(root / "2026-03-01/last", "");
    until([&] { return events.seen > before; });
    return timers.waiting() > 1;  // beside the next look
  }
  void exchangeWith(const fs::path& other) { ASSERT_TRUE(posixFileSystem().exchange(root, other)); }

  TemporaryFolder folder{quickParent()};
  fs::path root = folder.path() / "root";
  ManualClock clock;
  ManualTimers timers{clock};
  QuickEvents events;
  std::mutex mutex;
  std::string told;
  std::unique_ptr<DataDirWatcher> watcher;
};

TEST_F(DataDirWatcherTest, NotesOfOtherProgramsAreTold) {
  writeFile(folder.path() / "elsewhere/901.md", "");
  fs::create_directory_symlink(folder.path() / "elsewhere", root / "2026-03-02");
  const auto write = [&](const char* file) { writeFile(root / file, "text"); };
  start();
  for (const auto& [name, does, isTold] :
       std::vector<std::tuple<const char*, std::function<void()>, bool>>{
           {"lowest", [&] { write("2026-03-01/901.md"); }, true},
           {"highest, in a day that comes", [&] { write("2026-03-03/999.md"); }, true},
           {"gone", [&] { fs::remove(root / "2026-03-03/999.md"); }, true},
           {"a burst",
            [&] {
              for (int i = 0; i < 10'000; ++i)
                writeFile(root / fmt::format("2026-03-01/{}.md", i), "");
            },
            true},
           {"ours", [&] { write("2026-03-01/900.md"), write("2026-03-01/1000.md"); }, false},
           {"none", [&] { write("2026-03-01/abc.md"), write("2026-03-01/905.md.tmp"); }, false},
           {"elsewhere",
            [&] { fs::create_symlink(folder.path() / "elsewhere/901.md", root / "902.md"); },
            false}}) {
    SCOPED_TRACE(name);
    does();
    ASSERT_EQ(isNoticed(), isTold);
    if (!isTold) continue;
    timers.advance(799ms);
    EXPECT_EQ(timers.waiting(), 2U) << "later ones don't put it off";
    timers.advance(1ms);
    expectTold("write ");
  }
  watcher->start();
  write("2026-03-01/901.md");
  ASSERT_TRUE(isNoticed());
  watcher->stop();
  timers.advance(2min);
  expectTold("");
  watcher->start();
  watcher->rememberRoot();
  EXPECT_EQ(events.streams, 2);
}

TEST_F(DataDirWatcherTest, TheRootIsReplacedAndComesBack) {
  const fs::path other = folder.path() / "other";
  const fs::path third = folder.path() / "third";
  fs::create_directories(other / "2026-03-01");
  fs::create_directories(third / "2026-03-01");
  build();
  exchangeWith(other);  // while starting
  watcher->start();
  expectTold("replaced ");
  exchangeWith(other);
  expectTold("replaced ");
  exchangeWith(third);
  expectTold("replaced ");
  writeFile(root / "2026-03-01/901.md", "");
  EXPECT_TRUE(isNoticed());
  timers.advance(1s);
  expectTold("write ");
  fs::rename(root, folder.path() / "away");
  expectTold("missing ");
  fs::rename(folder.path() / "away", root);
  expectTold("replaced ");
  fs::remove_all(root);
  expectTold("missing ");
  fs::create_directories(root);
  expectTold("replaced ");
}

TEST_F(DataDirWatcherTest, WhatCantBeWatchedIsTriedAgain) {
  events.fails = true;
  fs::remove_all(root);
  start();
  expectTold("missing ");
  for (int i = 2; i < 5; ++i) {
    timers.advance(30s);
    until([&] { return events.streams == i && timers.waiting() == 1; });
  }
  events.fails = false;
  timers.advance(30s);
  until([&] { return events.streams == 5 && timers.waiting() == 1; });
  fs::create_directories(root / "2026-03-01");
  until([&] { return timers.waiting() == 2; });
  timers.advance(1s);
  expectTold("write ");
}

TEST_F(DataDirWatcherTest, ADiskThatGoesAndComes) {
  const ChildEnd end = runInChild([&] {
    if (const auto refused = takePrivateMounts()) GTEST_SKIP() << *refused;
    fs::remove_all(root);
    auto disk = std::make_unique<Mount>(Mount::Source{"tmpfs"}, folder.path());
    fs::create_directories(root / "2026-03-01");
    start();
    EXPECT_FALSE(isNoticed());
    disk->unmount();
    expectTold("missing ");
    disk = std::make_unique<Mount>(Mount::Source{"tmpfs"}, folder.path());
    fs::create_directories(root / "2026-03-01");
    timers.advance(30s);
    expectTold("replaced ");
    watcher.reset();
    disk->unmount();
  });
  if (end == skippedInChild) GTEST_SKIP();
  EXPECT_EQ(end, ChildEnd{});
}

}  // namespace
}  // namespace nomely::test
