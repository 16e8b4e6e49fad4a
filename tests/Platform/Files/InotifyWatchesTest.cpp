#include <set>

#include <fmt/format.h>
#include <sched.h>

#include "Platform/Files/FileManager.h"
#include "Platform/Files/InotifyWatches.h"
#include "Platform/Time/Day.h"
#include "Support/ForkedRun.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

using Names = std::set<std::string>;

class InotifyWatchesTest : public testing::Test {
 protected:
  void watch() {
    watches.emplace(root, [](const std::string& name) { return Day::parse(name).has_value(); });
  }
  void write(const std::string& file) const { writeFile(root / file, "text"); }
  // What happened since the last call; "any" alone where not all of it is known.
  Names read() {
    InotifyWatches::Seen seen;
    watches->retry(seen);
    for (int i = 0; i < 50; ++i) watches->read(seen);
    if (seen.isIncomplete) return {"any"};
    Names names;
    for (const std::string& file : seen.changed)
      names.insert(fs::path(file).lexically_relative(root).string());
    return names;
  }

  TemporaryFolder folder{quickParent()};
  fs::path root = folder.path() / "root";
  std::optional<InotifyWatches> watches;
};

TEST_F(InotifyWatchesTest, DoesThenTold) {
  const fs::path elsewhere = folder.path() / "elsewhere";
  write("2026-03-01/0.md");
  watch();
  for (const auto& [does, told] : std::vector<std::pair<std::function<void()>, Names>>{
           {[&] { write("2026-03-01/1.md"); }, {"2026-03-01/1.md"}},
           {[&] { FileManager(posixFileSystem()).writeAtomically(root / "2026-03-01/2.md", ""); },
            {"2026-03-01/2.md"}},
           {[&] { fs::create_hard_link(root / "2026-03-01/1.md", root / "2026-03-01/3.md"); },
            {"2026-03-01/3.md"}},
           {[&] { fs::remove(root / "2026-03-01/1.md"); }, {"2026-03-01/1.md"}},
           {[&] { write("2026-03-02/4.md"); }, {"2026-03-02/4.md"}},
           {[&] { fs::rename(root / "2026-03-02", root / "2026-03-03"); }, {"2026-03-03/4.md"}},
           {[&] { write("2026-03-03/5.md"); }, {"2026-03-03/5.md"}},
           {[&] { fs::rename(root / "2026-03-03", elsewhere); }, {}},
           {[&] { writeFile(elsewhere / "6.md", ""); }, {}},
           {[&] { write("2026-03-03/7.md"); }, {"2026-03-03/7.md"}},
           {[&] { write(".versions/a/8.md"), write("notes/8.md"); }, {}},
           {[&] { fs::create_directory_symlink(elsewhere, root / "2026-03-04"); }, {"2026-03-04"}},
           {[&] { write("2026-03-04/9.md"); }, {}}}) {
    does();
    EXPECT_EQ(read(), told);
  }
}

// The system's queue holds 16,384 events.
TEST_F(InotifyWatchesTest, LostEventsAreMadeUpForByLooking) {
  write("2026-03-01/1.md");
  watch();
  for (int i = 0; i < 10'000; ++i) write(fmt::format("2026-03-01/{}", i));
  fs::rename(root / "2026-03-01", root / "2026-03-05");
  write("2026-03-02/1.md");
  EXPECT_EQ(read(), Names{"any"});
  write("2026-03-02/2.md");
  write("2026-03-05/3.md");
  EXPECT_EQ(read(), Names({"2026-03-02/2.md", "2026-03-05/3.md"}));
}

TEST_F(InotifyWatchesTest, ShortOfWatchesTheNewestDaysAreWatched) {
  const ChildEnd end = runInChild([&] {
    if (::unshare(CLONE_NEWUSER) != 0) GTEST_SKIP() << "namespaces are not permitted here";
    const auto limit = [](const char* count) {
      writeFile("/proc/sys/user/max_inotify_watches", count);
    };
    const auto writeEach = [&] {
      for (int day = 1; day < 7; ++day) write(fmt::format("2026-03-0{}/1.md", day));
    };
    for (int day = 1; day < 6; ++day)
      fs::create_directories(root / fmt::format("2026-03-0{}", day));
    testing::internal::CaptureStderr();
    limit("5");  // the root, the folder that holds it, three days
    watch();
    writeEach();
    (void)read();  // the sixth came
    writeEach();
    EXPECT_EQ(read(), Names({"2026-03-04/1.md", "2026-03-05/1.md", "2026-03-06/1.md"}));
    limit("100");
    EXPECT_EQ(read(), Names{"any"});
    writeEach();
    EXPECT_EQ(read().size(), 6U);
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find("max_user_watches"), std::string::npos);
    EXPECT_EQ(log.find("max_user_watches"), log.rfind("max_user_watches"));
  });
  if (end == skippedInChild) GTEST_SKIP();
  EXPECT_EQ(end, ChildEnd{});
}

}  // namespace
}  // namespace nomely::test
