#include <functional>

#include <gtest/gtest.h>
#include <unistd.h>

#include "Core/Storage/AttachmentManager.h"
#include "Platform/Files/FileError.h"
#include "Support/ErrorKind.h"
#include "Support/ForkedRun.h"
#include "Support/Mounts.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

namespace fs = std::filesystem;

const Day today = day("2026-03-01");

// Stores on a disk of their own, in a child process.
class DiskTest : public testing::Test {
 protected:
  using Body = std::function<void(Mount& disk, const DayStore& store)>;

  void onDisk(const std::string& options, const Body& body) {
    const ChildEnd end = runInChild([&] {
      if (const auto reason = takePrivateMounts()) GTEST_SKIP() << *reason;
      Mount disk({.type = "tmpfs", .options = options}, folder_.path());
      body(disk, DayStore({{folder_.path()}, FileManager(posixFileSystem()), clock_}));
    });
    if (end == skippedInChild) GTEST_SKIP() << "for the reason above";
    EXPECT_EQ(end, ChildEnd{});
  }

  TemporaryFolder folder_;
  ManualClock clock_;
};

void expectNoTemporary(const fs::path& folder) {
  for (const auto& entry : fs::recursive_directory_iterator(folder))
    EXPECT_FALSE(FileManager::isTemporaryName(entry.path().filename().native())) << entry.path();
}

// Adds memos until the disk is full, and returns those that were reported as saved.
std::vector<Memo> fill(const DayStore& store) {
  std::vector<Memo> memos;
  const auto failure = kindOf<FileError>([&] {
    for (int i = 0; i < 1000; ++i)
      memos.insert(memos.begin(), store.createMemo(today, {.body = std::string(5000, 'm')}));
  });
  EXPECT_EQ(failure, FileError::Kind::noSpace);
  return memos;
}

TEST_F(DiskTest, AFullDiskLosesNothing) {
  onDisk("size=64k", [](Mount&, const DayStore& store) {
    const std::vector<Memo> memos = fill(store);
    ASSERT_GT(memos.size(), 2U);
    const std::string before = treeOf(store.paths().rootURL);
    Memo longer = memos[0];
    longer.body += std::string(20'000, 'x');
    const AttachmentManager attachments(store.context());
    const fs::path photo = store.paths().memoFile(today, 1);
    EXPECT_EQ(kindOf<FileError>([&] { store.updateMemo(longer, today, memos[0]); }),
              FileError::Kind::noSpace);
    EXPECT_EQ(kindOf<FileError>([&] { store.commitMemo(longer, today, memos[0]); }),
              FileError::Kind::noSpace);
    EXPECT_EQ(kindOf<FileError>([&] { (void)store.moveMemo(memos[1], today, today.plusDays(1)); }),
              FileError::Kind::noSpace);
    EXPECT_THROW((void)attachments.importFile(photo, today), AttachmentManager::ImportError);
    EXPECT_EQ(store.listMemos(today), memos);
    expectNoTemporary(store.paths().rootURL);

    store.deleteMemo(today, memos[2]);
    store.deleteMemo(today, memos[1]);
    store.updateMemo(memos[0], today, memos[0]);
    EXPECT_EQ(store.listMemos(today).size(), memos.size() - 2);
  });
}

TEST_F(DiskTest, NoRoomForAnotherFileLosesNothing) {
  onDisk("size=1m,nr_inodes=9", [](Mount&, const DayStore& store) {
    const std::vector<Memo> memos = fill(store);
    ASSERT_GT(memos.size(), 2U);
    EXPECT_EQ(store.listMemos(today), memos);
    expectNoTemporary(store.paths().rootURL);
  });
}

TEST_F(DiskTest, AReadOnlyDiskIsReadAndNotWritten) {
  onDisk("size=1m", [](Mount& disk, const DayStore& store) {
    const Memo memo = store.createMemo(today, {.body = "before"});
    disk.makeReadOnly();
    Memo changed = memo;
    changed.body = "after";
    struct Case {
      const char* name;
      std::function<void()> call;
    };
    for (const Case& each : std::vector<Case>{
             {"create", [&] { (void)store.createMemo(today, {.body = "new"}); }},
             {"create in a new day",
              [&] { (void)store.createMemo(today.plusDays(1), {.body = "new"}); }},
             {"update", [&] { store.updateMemo(changed, today, memo); }},
             {"commit", [&] { store.commitMemo(changed, today, memo); }},
             {"move", [&] { (void)store.moveMemo(memo, today, today.plusDays(1)); }},
             {"delete", [&] { store.deleteMemo(today, memo); }},
         })
      EXPECT_EQ(kindOf<FileError>(each.call), FileError::Kind::readOnly) << each.name;
    EXPECT_EQ(store.listMemos(today), std::vector{memo});
  });
}

TEST_F(DiskTest, ARootWithoutPermissionIsReported) {
  constexpr uid_t nobody = 65534;
  fs::permissions(folder_.path(), static_cast<fs::perms>(0555));
  const ChildEnd end = runInChild([&] {
    if (::geteuid() == 0) {
      ASSERT_EQ(::seteuid(nobody), 0);  // the superuser may write anywhere
    }
    const DayStore store({{folder_.path()}, FileManager(posixFileSystem()), clock_});
    EXPECT_EQ(kindOf<FileError>([&] { (void)store.createMemo(today, {.body = "new"}); }),
              FileError::Kind::accessDenied);
    EXPECT_TRUE(store.listAllDates().empty());
  });
  EXPECT_EQ(end, ChildEnd{});
}

}  // namespace
}  // namespace nomely::test
