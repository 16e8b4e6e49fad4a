#include <atomic>
#include <mutex>

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

// The system's; a test may refuse it, or say itself what happened.
class TestEvents final : public FileEvents {
 public:
  std::unique_ptr<FileEventStream> watch(FileEventRequest request) override {
    ++streams;
    queue = &request.queue;
    onBatch = request.onBatch;
    if (fails) throw FileError("监听", request.root, EMFILE);
    return systemFileEvents().watch(std::move(request));
  }
  void happened(const FileEventBatch& batch) const {
    queue->sync([&] { onBatch(batch); });
  }

  std::atomic<int> streams = 0;
  std::atomic<bool> fails = false;
  SerialQueue* queue = nullptr;
  std::function<void(const FileEventBatch&)> onBatch;
};

class DataDirWatcherTest : public testing::Test {
 protected:
  DataDirWatcherTest() { fs::create_directories(root / "2026-03-01"); }

  void build() {
    const auto tells = [this](const char* what) {
      return [this, what] {
        const std::lock_guard lock(mutex);
        told += what;
      };
    };
    watcher.emplace(StoreContext({root}, FileManager(posixFileSystem()), clock), events, timers,
                    DataDirWatcher::Observer{tells("write "), tells("replaced "), tells("missing "),
                                             tells("quiet ")});
  }
  void start() {
    watcher->start();
    watcher->rememberRoot();  // its turn comes after that of the start
  }
  static void until(const std::function<bool()>& done) {
    const auto deadline = std::chrono::steady_clock::now() + longestWait;
    while (!done() && std::chrono::steady_clock::now() < deadline) std::this_thread::yield();
    EXPECT_TRUE(done());
  }
  void expectTold(const std::string& expected) {
    until([&] {
      const std::lock_guard lock(mutex);
      return told.size() >= expected.size();
    });
    const std::lock_guard lock(mutex);
    EXPECT_EQ(std::exchange(told, {}), expected);
  }
  void exchangeWith(const fs::path& other) const {
    ASSERT_TRUE(posixFileSystem().exchange(root, other));
  }

  TemporaryFolder folder{quickParent()};
  fs::path root = folder.path() / "root";
  ManualClock clock;
  ManualTimers timers{clock};
  TestEvents events;
  std::mutex mutex;
  std::string told;
  std::optional<DataDirWatcher> watcher;
};

TEST_F(DataDirWatcherTest, NotesOfOtherProgramsAreTold) {
  const fs::path day = root / "2026-03-01";
  writeFile(folder.path() / "904.md", "");
  fs::create_symlink(folder.path() / "904.md", day / "904.md");
  for (const char* name : {"002.sync-conflict-20261121-101530-ABCDEFG.md", "002.md~", "notes.MD"})
    writeFile(day / name, "");
  build();
  const StoreContext context({root}, FileManager(posixFileSystem()), clock);
  const DayStore store(context);
  const auto put = [&](std::int64_t number) {
    Memo memo;
    memo.seqNumber = number;
    context.write([&] { store.memoStore().write(memo, *Day::parse("2026-03-01")); });
  };
  put(1);
  put(950);
  (void)store.createMemo(*Day::parse("2026-03-01"), {.body = "this process's: 951"});
  writeFile(day / "951.md", "changed by another");
  start();
  watcher->start();
  for (const auto& [batch, expected] : std::vector<std::pair<FileEventBatch, std::string>>{
           {{{day / "abc.md", day / "901.md"}}, "write quiet "},
           {{{day / "+999.md"}}, "write quiet "},
           {{{}, true}, "write quiet "},
           {{{day / "002.md", day / "1000.md"}}, "write quiet "},
           {{{day / "951.md"}}, "write quiet "},
           {{{day / "001.md"}}, ""},
           {{{day / "950.md"}}, "write "},
           {{{day / "002.sync-conflict-20261121-101530-ABCDEFG.md"}}, "quiet "},
           {{{day / "002.md~", day / "001.md"}}, "quiet "},
           {{{day / "notes.MD"}}, "quiet "},
           {{{day / "gone.md", day / "~syncthing~002.md.tmp", day / "905"}}, ""},
           {{{day / "904.md", folder.path() / "root2/901.md", root / "901.md"}}, ""}}) {
    SCOPED_TRACE(testing::PrintToString(batch.changed));
    events.happened(batch);
    timers.advance(799ms);
    expectTold("");
    events.happened({{day / "a.png"}});
    timers.advance(1ms);
    // What is told later must not come sooner: the engine goes on meanwhile.
    if (expected.starts_with("write ")) expectTold("write ");
    if (!expected.ends_with("quiet ")) {
      timers.advance(1min);
      until([&] { return timers.waiting() == 1; });  // for the next look
      expectTold("");
      continue;
    }
    until([&] { return timers.waiting() == 2; });
    timers.advance(1s);
    events.happened({{day / "a.png"}});
    timers.advance(1999ms);
    expectTold("");
    timers.advance(1ms);
    expectTold("quiet ");
  }
  events.happened({.isIncomplete = true});
  watcher->stop();
  timers.advance(2min);
  start();
  expectTold("");
  EXPECT_EQ(events.streams, 2);
}

TEST_F(DataDirWatcherTest, TheRootIsReplacedAndComesBack) {
  const fs::path other = folder.path() / "other";
  fs::create_directories(other / "2026-03-01");
  build();
  exchangeWith(other);  // while starting
  start();
  expectTold("replaced ");
  exchangeWith(other);
  expectTold("replaced ");
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
  build();
  start();
  expectTold("missing ");
  for (int i = 2; i < 5; ++i) {
    events.fails = i < 4;
    timers.advance(30s);
    until([&] { return events.streams == i && timers.waiting() == 1; });
  }
  fs::create_directories(root);
  until([&] { return timers.waiting() == 3; });
  timers.advance(1s);
  expectTold("write ");
}

TEST_F(DataDirWatcherTest, ADiskThatGoesAndComes) {
  const ChildEnd end = runInChild([&] {
    if (const auto refused = takePrivateMounts()) GTEST_SKIP() << *refused;
    fs::remove_all(root);
    std::optional<Mount> disk(std::in_place, Mount::Source{"tmpfs"}, folder.path());
    fs::create_directories(root);
    build();
    start();
    disk->unmount();
    expectTold("missing ");
    disk.emplace(Mount::Source{"tmpfs"}, folder.path());
    fs::create_directories(root);
    timers.advance(30s);
    expectTold("replaced ");
    watcher.reset();
  });
  if (end == skippedInChild) GTEST_SKIP();
  EXPECT_EQ(end, ChildEnd{});
}

}  // namespace
}  // namespace nomely::test
