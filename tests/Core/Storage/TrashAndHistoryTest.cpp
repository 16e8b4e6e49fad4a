#include <limits>

#include "Core/Storage/TrashStore.h"
#include "Core/Storage/VersionStore.h"
#include "Core/Storage/WriteError.h"
#include "Platform/Files/FileError.h"
#include "Support/ErrorKind.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

class TrashTest : public StoreTest {
 protected:
  Day today = day("2026-03-01");
  fs::path trash = folder.path() / ".trash";
  TrashStore bin{context};

  [[nodiscard]] Memo create(const std::string& body, std::vector<std::string> files = {}) {
    for (const std::string& name : files) writeFile(dayFile(name), "content of " + name);
    return store.createMemo(today, {.body = body, .attachments = std::move(files)});
  }
  [[nodiscard]] fs::path dayFile(const std::string& name) const {
    return folder.path() / "2026-03-01" / name;
  }
  [[nodiscard]] TrashEntry trashed(const Memo& memo) {
    const std::string subdir = bin.trashMemo(today, memo);
    for (const TrashEntry& entry : bin.listTrash())
      if (entry.trashSubdir == subdir) return entry;
    throw std::runtime_error("not listed: " + subdir);
  }
};

TEST_F(TrashTest, NumbersAndNamesThatWereGivenAwayStayWithTheirNewOwners) {
  const TrashEntry first = trashed(create("第一个一号", {"a.png"}));
  const Memo second = create("第二个一号");
  writeFile(dayFile("003.md"), "---\n---\n");
  writeFile(dayFile("a.png"), "another a.png");
  testing::internal::CaptureStderr();
  EXPECT_EQ(bin.restoreMemo(first), 4) << "a gap is not filled";
  EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("附件 a.png 在目标位置已存在"));
  EXPECT_EQ(readFile(dayFile("a.png")), "another a.png");
  EXPECT_THAT(treeOf(trash / "_attachments"), HasSubstr("content of a.png"));
  EXPECT_FAILURE(WriteError, missingMemo, bin.restoreMemo(first));

  Memo moved = first.memo;
  moved.seqNumber = 4;
  EXPECT_EQ(store.listMemos(today), (std::vector{moved, second}));
  EXPECT_EQ(trashed(moved).trashSubdir, "2026-03-01_004");
  EXPECT_EQ(trashed(create("又一个四号")).trashSubdir, "2026-03-01_004_20260301093005000_1");
}

TEST_F(TrashTest, ADamagedMemoComesBackByteForByte) {
  TrashEntry entry = trashed(create("将要损坏"));
  writeFile(trash / entry.trashSubdir / "memo.md", "no header, but words");
  const std::vector<TrashEntry> listed = bin.listTrash();
  ASSERT_THAT(listed, SizeIs(1));
  EXPECT_EQ(listed[0].memo.body, "");
  EXPECT_EQ(listed[0].memo.time, "09:30");
  const Memo taken = create("占了一号");
  bin.restoreMemo(listed[0]);
  EXPECT_EQ(readFile(dayFile("002.md")), "no header, but words");
}

TEST_F(TrashTest, FoldersThatAreNoEntriesAreNotListed) {
  for (const auto& [name, meta] :
       std::vector<std::pair<std::string, std::string>>{{"no comma", "2026-03-01"},
                                                        {"no date", "x,7"},
                                                        {"short date", "2026-3-1,7"},
                                                        {"no number", "2026-03-01,seven"}}) {
    writeFile(trash / name / "memo.md", "---\ntime: 08:00\n---\n");
    writeFile(trash / name / "meta.txt", meta);
  }
  writeFile(trash / "no meta" / "memo.md", "---\ntime: 08:00\n---\n");
  writeFile(trash / "no memo" / "meta.txt", "2026-03-01,7");
  writeFile(trash / "_attachments" / "2026-03-01_093005" / "a.png", "a");
  EXPECT_THAT(bin.listTrash(), IsEmpty());
}

TEST_F(TrashTest, ForgedNumbersHideNoMemo) {
  TrashEntry entry = trashed(create("编号是假的"));
  entry.memo.seqNumber = -3;
  bin.restoreMemo(entry);
  EXPECT_EQ(store.listNumbers(today), std::vector<std::int64_t>{1});

  entry = trashed(store.listMemos(today).front());
  entry.memo.seqNumber = std::numeric_limits<std::int64_t>::max();
  writeFile(dayFile("9223372036854775807.md"), "");
  EXPECT_FAILURE(FileError, tooLarge, bin.restoreMemo(entry));
  EXPECT_FAILURE(FileError, tooLarge, store.createMemo(today, {}));
  EXPECT_EQ(bin.listTrash().size(), 1U);
}

TEST_F(TrashTest, ForgedNamesReachNothingOutside) {
  writeFile(folder.path() / "outside" / "memo.md", "---\ntime: 08:00\n---\n");
  const std::string before = treeOf(folder.path());
  const TrashEntry real = trashed(create("x"));
  for (const std::string name : {"../outside", "", ".", "..", "a/b"}) {
    SCOPED_TRACE(name);
    TrashEntry forged = real;
    forged.trashSubdir = name;
    EXPECT_FAILURE(WriteError, missingMemo, bin.restoreMemo(forged));
    EXPECT_FAILURE(WriteError, missingMemo, bin.deleteTrashEntries({forged}));
  }
  EXPECT_THAT(bin.listTrash(), SizeIs(1));
  EXPECT_EQ(readFile(folder.path() / "outside" / "memo.md"), "---\ntime: 08:00\n---\n");
}

TEST_F(TrashTest, DeletingAMemoWithoutIdentityLeavesTheNextOwnerOfItsNumberItsVersions) {
  for (const bool empties : {false, true}) {
    writeFile(dayFile("001.md"), "---\ntime: 08:00\n---\n\n旧格式");
    const TrashEntry legacy = trashed(store.listMemos(today).at(0));
    Memo next = create("接着用一号");
    next.body = "改过";
    store.commitMemo(next, today, std::nullopt);
    ASSERT_EQ(next.seqNumber, legacy.memo.seqNumber);
    empties ? bin.emptyTrash() : bin.deleteTrashEntries({legacy});
    EXPECT_THAT(VersionStore(context).listVersions(today, 1, next.memoId), SizeIs(1));
    store.deleteMemo(today, next);
  }
}

class HistoryTest : public TrashTest {
 protected:
  // A memo with the bodies given one after the other, an hour apart.
  [[nodiscard]] Memo written(const std::vector<std::string>& bodies) {
    Memo memo = create(bodies[0]);
    for (std::size_t i = 1; i < bodies.size(); ++i) {
      clock.advance(std::chrono::hours(1));
      memo.body = bodies[i];
      store.commitMemo(memo, today, std::nullopt);
    }
    return memo;
  }
  [[nodiscard]] std::vector<std::string> bodies(const Memo& memo) const {
    std::vector<std::string> found;
    for (const VersionEntry& version : versions.listVersions(today, memo.seqNumber, std::nullopt))
      found.push_back(version.memo.body);
    return found;
  }

  VersionStore versions{context};
};

TEST_F(HistoryTest, OldLayoutsAreReadAndStrangersPassedOver) {
  const Memo memo = written({"一", "二"});
  const std::string own = "---\nid: " + *memo.memoId + "\ntime: 08:00\n---\n\n";
  writeFile(folder.path() / ".versions/2020-01-01_001/1500000000.5_X.md", own + "老版本");
  writeFile(folder.path() / ".versions/2020-01-01_001/notanumber_X.md", own + "无时间");
  writeFile(folder.path() / ".versions/2020-01-01_001/1_X.md", "---\nid: memo_other\n---\n别人的");
  writeFile(versions.identityDirectory(*memo.memoId) / "2_X.md", "damaged");
  EXPECT_EQ(bodies(memo), (std::vector<std::string>{"一", "老版本"}));
  versions.deleteAllVersions(today, 1, std::nullopt);
  EXPECT_THAT(bodies(memo), IsEmpty());
  EXPECT_FALSE(fs::exists(versions.identityDirectory(*memo.memoId)));
  EXPECT_TRUE(fs::exists(folder.path() / ".versions/2020-01-01_001/1_X.md"));
}

TEST_F(HistoryTest, AVersionWhoseAttachmentIsNowhereIsNotRestored) {
  Memo memo = create("有图", {"a.png"});
  memo.attachments.clear();
  store.commitMemo(memo, today, std::nullopt);
  fs::remove(dayFile("a.png"));
  fs::remove_all(versions.identityDirectory(*memo.memoId) / "attachments");
  const VersionEntry version = versions.listVersions(today, 1, std::nullopt).at(0);
  const std::string before = treeOf(folder.path());
  EXPECT_EQ(
      messageOf<MissingAttachmentError>([&] { versions.restore(today, 1, version, std::nullopt); }),
      "此历史版本的附件已缺失，未替换当前笔记：a.png");
  EXPECT_EQ(treeOf(folder.path()), before);
}

TEST_F(HistoryTest, ForgedAndForeignVersionsAreRefused) {
  const Memo memo = written({"一", "二"});
  const Memo other = create("另一条");
  VersionEntry version = versions.listVersions(today, 1, std::nullopt).at(0);
  EXPECT_FAILURE(WriteError, identityChanged, versions.restore(today, 2, version, std::nullopt));
  Memo stale = memo;
  stale.body = "别处读到的";
  EXPECT_FAILURE(WriteError, conflict, versions.restore(today, 1, version, stale));
  for (const std::string name : {"../../x", "../2026-03-01/002.md", ""}) {
    SCOPED_TRACE(name);
    version.filename = name;
    EXPECT_FAILURE(WriteError, identityChanged, versions.restore(today, 1, version, std::nullopt));
  }
}

using namespace std::string_view_literals;

class VersionStoreTest : public StoreTest {
 protected:
  VersionStoreTest() {
    memo.memoId = "m";
    memo.body = "0";
    store.memoStore().write(memo, today);
  }

  VersionStore versions{context};
  Day today = day("2026-03-01");
  Memo memo = Memo::empty(1, clock);
  fs::path snapshots = folder.path() / ".versions" / "by-id" / "6d";
};

TEST_F(VersionStoreTest, KeepsAttachmentsThatTheMemoLetsGoOf) {
  const fs::path dayFolder = context.paths.dayFolder(today);
  const fs::path kept = snapshots / "attachments";
  memo.attachments = {"a.png", "b.png", "gone.png", "../secret", "c.png"};
  store.memoStore().write(memo, today);
  for (const char* name : {"a.png", "b.png", "c.png"}) writeFile(dayFolder / name, name);
  writeFile(folder.path() / "secret", "secret");
  writeFile(kept / "c.png", "older copy");
  memo.attachments = {"b.png"};
  memo.body = "1";
  store.commitMemo(memo, today, {});
  EXPECT_EQ(treeOf(kept), "a.png\na.png\nc.png\nolder copy\n");
  EXPECT_EQ(readFile(dayFolder / "a.png"), "a.png");
  EXPECT_FALSE(fs::exists(snapshots / "secret"));
}

TEST_F(VersionStoreTest, SafeFilenames) {
  for (const std::string_view name : {"a.png", "日记 1", "...", ".hidden"})
    EXPECT_TRUE(VersionStore::isSafeFilename(name)) << name;
  for (const std::string_view name :
       {""sv, "."sv, ".."sv, "a/b"sv, "/a"sv, "../x"sv, "a/"sv, "a\\b"sv, "a\0b"sv})
    EXPECT_FALSE(VersionStore::isSafeFilename(name)) << name;
}

}  // namespace
}  // namespace nomely::test
