#include <unistd.h>

#include "Core/Lifecycle/RootInspector.h"
#include "Core/Safety/Course.h"
#include "Platform/Files/FileError.h"
#include "Support/ErrorKind.h"
#include "Support/ForkedRun.h"
#include "Support/Mounts.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

const Day today = day("2026-03-01");

// Every change of `memos`, the two first of them, fails like that and changes nothing.
void expectRefused(const DayStore& store, const std::vector<Memo>& memos, FileError::Kind kind) {
  Memo longer = memos.at(0);
  longer.body += std::string(20'000, 'x');
  EXPECT_EQ(kindOf<FileError>([&] { (void)store.createMemo(today, {.body = longer.body}); }), kind);
  EXPECT_EQ(kindOf<FileError>([&] { store.commitMemo(longer, today, memos[0]); }), kind);
  EXPECT_EQ(kindOf<FileError>([&] { (void)store.moveMemo(memos[1], today, today.plusDays(1)); }),
            kind);
  EXPECT_EQ(store.listMemos(today), memos);
  EXPECT_EQ(treeOf(store.paths().rootURL).find(".tmp\n"), std::string::npos);
}

// On a disk of its own that is full, and then read-only.
TEST(DiskTest, AFullOrReadOnlyDiskLosesNothing) {
  const TemporaryFolder folder;
  const ChildEnd end = runInChild([&] {
    if (const auto reason = takePrivateMounts()) GTEST_SKIP() << *reason;
    Mount disk({.type = "tmpfs", .options = "size=64k"}, folder.path());
    const ManualClock clock;
    const DayStore store({{folder.path()}, FileManager(posixFileSystem()), clock});
    std::vector<Memo> memos;
    const std::string body(5000, 'm');
    EXPECT_EQ(kindOf<FileError>([&] {
                while (memos.size() < 1000)
                  memos.insert(memos.begin(), store.createMemo(today, {.body = body}));
              }),
              FileError::Kind::noSpace);
    ASSERT_GT(memos.size(), 2U);
    expectRefused(store, memos, FileError::Kind::noSpace);
    store.deleteMemo(today, memos.back());
    memos.pop_back();
    store.updateMemo(memos[0], today, memos[0]);

    disk.makeReadOnly();
    expectRefused(store, memos, FileError::Kind::readOnly);
    EXPECT_FAILURE(FileError, readOnly, store.deleteMemo(today, memos[0]));
  });
  if (end == skippedInChild) GTEST_SKIP() << "for the reason above";
  EXPECT_EQ(end, ChildEnd{});
}

TEST(DiskTest, ARootWithoutPermissionIsReported) {
  const TemporaryFolder folder;
  fs::create_directory(folder.path() / "2026-03-02");
  fs::permissions(folder.path() / "2026-03-02", fs::perms::none);
  fs::permissions(folder.path(), static_cast<fs::perms>(0555));
  const ChildEnd end = runInChild([&] {
    constexpr uid_t nobody = 65534;
    if (::geteuid() == 0) {
      ASSERT_EQ(::seteuid(nobody), 0);  // the superuser may write anywhere
    }
    const ManualClock clock;
    const DayStore store({{folder.path()}, FileManager(posixFileSystem()), clock});
    EXPECT_FAILURE(FileError, accessDenied, store.createMemo(today, {.body = "new"}));
    EXPECT_TRUE(store.listAllDates().empty());
    const MemoService service(store.context());
    const auto report = RootInspector(service).inspect([](double) {}, {});
    EXPECT_THAT(report.unreadableFolders, ElementsAre("2026-03-02"));
  });
  EXPECT_EQ(end, ChildEnd{});
}

// A real disk loses no more than the one in memory does: operations on an ext4 whose
// power goes when they have been reported as done. What touches the disk are child processes, so
// that nothing keeps it from being unmounted.
TEST(PowerLossTest, WhatWasReportedAsDoneIsThere) {
  const ChildEnd end = runInChild([] {
    if (const auto reason = takePrivateMounts()) GTEST_SKIP() << *reason;
    const TemporaryFolder folder(quickParent());
    const fs::path disk = folder.path() / "mounted";
    fs::create_directory(disk);
    const fs::path image = folder.path() / "disk";
    const auto mounted = [&] { return Mount({.type = "ext4", .device = image}, disk); };
    try {
      makeExt4(image, std::uintmax_t{32} << 20);
      const Mount probe = mounted();
    } catch (const std::system_error& error) {
      GTEST_SKIP() << "no ext4 on a loop device here: " << error.what();
    }
    std::vector<Scenario> tried = scenarios();
    std::erase_if(tried, [](const Scenario& scenario) {
      return scenario.name != "commit" && scenario.name != "moveToNewDay";
    });
    tried.push_back(restoring(true));
    for (const Scenario& scenario : tried) {
      SCOPED_TRACE(scenario.name);
      const fs::path home = disk / scenario.name;
      {
        Mount mount = mounted();
        EXPECT_EQ(runInChild([&] {
                    writeTree(home, scenario.before);
                    ::sync();
                    const StoreContext context = contextAt(home, posixFileSystem());
                    scenario.run(context, context);
                    cutPower(disk);
                  }),
                  ChildEnd{});
        mount.unmount();
      }
      Mount mount = mounted();
      EXPECT_EQ(runInChild([&] { Course(scenario).oracle.expectDone(treeOn(home)); }), ChildEnd{});
      mount.unmount();
    }
  });
  if (end == skippedInChild) GTEST_SKIP() << "for the reason above";
  EXPECT_EQ(end, ChildEnd{});
}

}  // namespace
}  // namespace nomely::test
