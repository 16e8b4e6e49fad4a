#include <functional>
#include <mutex>
#include <set>

#include <fmt/format.h>
#include <sched.h>

#include "Platform/Files/FileManager.h"
#include "Platform/Files/InotifyWatches.h"
#include "Platform/Time/Day.h"
#include "Support/Deadline.h"
#include "Support/ForkedRun.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

using namespace std::chrono_literals;
using Names = std::set<std::string>;

bool isDay(const std::string& name) {
  return Day::parse(name).has_value();
}

class FileEventsTest : public testing::Test {
 protected:
  FileEventsTest() { fs::create_directories(root / "2026-03-01"); }

  void watch() {
    stream = systemFileEvents().watch({.root = root,
                                       .isWatched = isDay,
                                       .queue = queue,
                                       .latency = 1ms,
                                       .onBatch =
                                           [this](const FileEventBatch& batch) {
                                             const std::lock_guard lock(mutex);
                                             for (const fs::path& file : batch.changed)
                                               told.insert(file.lexically_relative(root).string());
                                             if (batch.isIncomplete) told.insert("any");
                                           },
                                       .onRootTouched = [] {}});
  }

  // What was told up to here: up to a file that is written for that, or to "any".
  Names toldSoFar(const std::string& day = "2026-03-01") {
    const std::string last = day + "/last" + std::to_string(count++);
    writeFile(root / last, "");
    for (const auto deadline = std::chrono::steady_clock::now() + longestWait;;
         std::this_thread::yield()) {
      const std::lock_guard lock(mutex);
      if (told.erase(last) > 0 || told.contains("any")) return std::exchange(told, {});
      if (std::chrono::steady_clock::now() > deadline) throw std::runtime_error("never told");
    }
  }

  TemporaryFolder folder{quickParent()};
  fs::path root = folder.path() / "root";
  SerialQueue queue{"test"};
  std::mutex mutex;
  Names told;
  int count = 0;
  std::unique_ptr<FileEventStream> stream;
};

TEST_F(FileEventsTest, DoesThenTold) {
  const auto write = [&](const char* file) { writeFile(root / file, "text"); };
  const FileManager files(posixFileSystem());
  struct Case {
    const char* name;
    std::function<void()> does;
    Names told;
  };
  watch();
  for (const Case& each : std::vector<Case>{
           {"written", [&] { write("2026-03-01/1.md"); }, {"2026-03-01/1.md"}},
           {"replaced as we do",
            [&] { files.writeAtomically(root / "2026-03-01/1.md", "more"); },
            {"2026-03-01/1.md"}},
           {"linked",
            [&] { fs::create_hard_link(root / "2026-03-01/1.md", root / "2026-03-01/2.md"); },
            {"2026-03-01/2.md"}},
           {"removed", [&] { fs::remove(root / "2026-03-01/1.md"); }, {"2026-03-01/1.md"}},
           {"in a day that comes", [&] { write("2026-03-02/3.md"); }, {"2026-03-02/3.md"}},
           {"in a day that was given another name",
            [&] {
              fs::rename(root / "2026-03-02", root / "2026-03-03");
              write("2026-03-03/4.md");
            },
            {"2026-03-03/3.md", "2026-03-03/4.md"}},
           {"in one that left",
            [&] {
              fs::rename(root / "2026-03-03", folder.path() / "elsewhere");
              writeFile(folder.path() / "elsewhere/5.md", "");
            },
            {}},
           {"where a day came again", [&] { write("2026-03-03/6.md"); }, {"2026-03-03/6.md"}},
           {"elsewhere", [&] { write(".versions/a/7.md"), write("notes/8.md"); }, {}},
           {"in a folder that is only linked",
            [&] {
              fs::create_directory_symlink(folder.path() / "elsewhere", root / "2026-03-04");
              writeFile(root / "2026-03-04/9.md", "");
            },
            {"2026-03-04"}}}) {
    SCOPED_TRACE(each.name);
    each.does();
    EXPECT_EQ(toldSoFar(), each.told);
  }
}

// The system's queue holds 16,384 events: the reader comes too late for most of these.
TEST_F(FileEventsTest, LostEventsAreMadeUpForByLooking) {
  InotifyWatches watches(root, isDay);
  for (int i = 0; i < 10'000; ++i) writeFile(root / fmt::format("2026-03-01/{}", i), "");
  fs::rename(root / "2026-03-01", root / "2026-03-05");
  writeFile(root / "2026-03-02/1.md", "");
  InotifyWatches::Seen seen;
  const auto readAll = [&] {
    for (int i = 0; i < 100; ++i) watches.read(seen);
  };
  readAll();
  EXPECT_TRUE(seen.isIncomplete);
  seen = {};
  writeFile(root / "2026-03-02/2.md", "");
  writeFile(root / "2026-03-05/3.md", "");
  readAll();
  EXPECT_EQ(seen.changed.size(), 2U);
  EXPECT_TRUE(seen.changed.contains((root / "2026-03-05/3.md").string()));
}

TEST_F(FileEventsTest, ShortOfWatchesTheNewestDaysAreWatched) {
  const auto limit = [](int watches) {
    writeFile("/proc/sys/user/max_inotify_watches", std::to_string(watches));
  };
  const ChildEnd end = runInChild([&] {
    if (::unshare(CLONE_NEWUSER) != 0) GTEST_SKIP() << "namespaces are not permitted here";
    for (int day = 1; day < 6; ++day)
      fs::create_directories(root / fmt::format("2026-03-0{}", day));
    testing::internal::CaptureStderr();
    limit(2);  // the root's folder and the root
    EXPECT_NO_THROW(watch());
    stream.reset();
    limit(5);
    watch();
    const auto writeEach = [&] {
      for (int day = 1; day < 7; ++day) writeFile(root / fmt::format("2026-03-0{}/1.md", day), "");
      return toldSoFar("2026-03-06");
    };
    (void)writeEach();  // the sixth came
    EXPECT_EQ(writeEach(), Names({"2026-03-04/1.md", "2026-03-05/1.md", "2026-03-06/1.md"}));
    limit(100);
    stream->retry();
    EXPECT_TRUE(toldSoFar("2026-03-06").contains("any"));
    EXPECT_GE(writeEach().size(), 6U);
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find("max_user_watches"), std::string::npos);
    EXPECT_EQ(log.find("max_user_watches"), log.rfind("max_user_watches"));
  });
  if (end == skippedInChild) GTEST_SKIP();
  EXPECT_EQ(end, ChildEnd{});
}

}  // namespace
}  // namespace nomely::test
