#include <gmock/gmock.h>

#include "Core/Service/ServiceTest.h"
#include "Platform/Files/FileError.h"

namespace nomely::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class MemoRecoveryTest : public ServiceTest {
 protected:
  [[nodiscard]] Memo withAttachment() {
    writeFile(context.paths.dayFolder(today) / "a.png", "picture");
    return service.create(today, {.body = "附", .attachments = {"a.png"}});
  }
  fs::path trash = folder.path() / ".trash";
};

// What a process leaves that dies in the middle of trashing, undoing, or restoring.
TEST_F(MemoRecoveryTest, WhatWasCutOffIsFinished) {
  const Memo memo = withAttachment();
  const TrashEntry entry = service.trash(today, memo);
  const fs::path inTrash = trash / entry.trashSubdir;
  fs::remove(inTrash / "meta.txt");
  EXPECT_THAT(service.trashed(), ElementsAre(entry));

  fs::rename(inTrash / "memo.md", fileOf(1));
  index.invalidateCache();
  EXPECT_THAT(service.trashed(), IsEmpty());
  EXPECT_EQ(readFile(context.paths.dayFolder(today) / "a.png"), "picture");
  EXPECT_FALSE(fs::exists(inTrash));

  fs::create_directories(trash / "2026-03-01_009");
  writeFile(trash / "2026-03-01_010" / "mine.txt", "kept");
  (void)service.trash(today, read(1));
  EXPECT_FALSE(fs::exists(trash / "2026-03-01_009"));
  EXPECT_TRUE(fs::exists(trash / "2026-03-01_010" / "mine.txt"));
}

TEST_F(MemoRecoveryTest, EmptyingCountsAllThatGoes) {
  const Memo memo = withAttachment();
  (void)service.detach(today, memo, {"a.png"});
  (void)service.trash(today, read(1));
  writeFile(trash / "odd" / "memo.md",
            "---\ntime: 08:00\ncreated_at: '2025-05-05T01:02:03Z'\n---\n\nx");
  const TrashContents contents = service.trashContents();
  EXPECT_THAT(contents.entries, SizeIs(1));
  EXPECT_THAT(contents.others, ElementsAre("odd"));
  EXPECT_EQ(contents.attachmentFiles, 1);

  const TrashEntry odd = service.trashStore().entryNamed("odd").value();
  EXPECT_EQ(odd.originalDate, day("2025-05-05"));
  EXPECT_EQ(service.restore(odd).day, odd.originalDate);
  EXPECT_EQ(store.memoStore().read(day("2025-05-05"), 1)->body, "x");
  EXPECT_EQ(service.trashStore().entryNamed("../2026-03-01"), std::nullopt);

  const fs::path elsewhere = folder.path() / "elsewhere";
  fs::rename(trash, elsewhere);
  fs::create_directory_symlink(elsewhere, trash);
  EXPECT_THROW(service.emptyTrash(), FileError);
  EXPECT_TRUE(fs::exists(elsewhere / "2026-03-01_001" / "memo.md"));
  EXPECT_TRUE(fs::is_symlink(trash));
}

TEST_F(MemoRecoveryTest, ANoteThatIsGoneOrBrokenComesBackFromItsHistory) {
  const Memo first = service.create(today, {.body = "一"});
  const Memo second = service.edit(today, first, "二");
  const auto versions = [&] { return service.versions().listVersions(today, 0, first.memoId); };
  EXPECT_THAT(service.versions().identities("memo_"), ElementsAre(first.memoId.value()));

  const TrashEntry entry = service.trash(today, second);
  EXPECT_THROW(service.restoreVanished(versions().front()), MemoService::InTrashError);
  EXPECT_EQ(service.restore(entry).day, entry.originalDate);

  std::string broken = readFile(fileOf(1));
  broken.insert(broken.find("time:"), "mood: abc\n");
  writeFile(fileOf(1), broken);
  index.invalidateCache();
  const auto besideBroken = service.restoreVanished(versions().front());
  EXPECT_EQ(besideBroken.memo.seqNumber, 2);
  EXPECT_EQ(read(2).body, "一");
  EXPECT_EQ(readFile(fileOf(1)), broken);

  fs::remove(fileOf(1));
  fs::remove(fileOf(2));
  index.invalidateCache();
  const auto again = service.restoreVanished(versions().front());
  EXPECT_EQ(again.day, today);
  EXPECT_EQ(again.memo.seqNumber, 1) << "its old place";
  EXPECT_EQ(again.memo.memoId, first.memoId);
}

}  // namespace
}  // namespace nomely::test
