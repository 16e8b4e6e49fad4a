#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Markdown/Frontmatter/YamlError.h"
#include "Core/Storage/DayStore.h"
#include "Core/Storage/MemoStore.h"
#include "Core/Storage/TrashStore.h"
#include "Core/Storage/VersionStore.h"
#include "Core/Storage/WriteError.h"
#include "Platform/Files/FileError.h"
#include "Support/ErrorKind.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

using Kind = WriteError::Kind;

constexpr const char* readable = "---\ntime: 09:30\n---\n\nbody";

class DayStoreTest : public StoreTest {
 protected:
  [[nodiscard]] fs::path file(const char* name, Day of) const {
    return context.paths.dayFolder(of) / name;
  }
  [[nodiscard]] std::vector<std::int64_t> listed(Day of) const {
    std::vector<std::int64_t> numbers;
    for (const Memo& memo : store.listMemos(of)) numbers.push_back(memo.seqNumber);
    return numbers;
  }

  Day today = day("2026-03-01");
  Day tomorrow = day("2026-03-02");
};

TEST_F(DayStoreTest, NumbersOfADay) {
  using Numbers = std::vector<std::int64_t>;
  const std::tuple<std::vector<const char*>, Numbers, std::int64_t> cases[] = {
      {{"001.md", "005.md"}, {5, 1}, 6},
      {{"999.md", "1000.md"}, {1000, 999}, 1001},
      {{"abc.md", "0.md", "-3.md", "000.md", "1.5.md", ".md", ".030.md", "020.MD", "021.md.bak"},
       {},
       1},
      {{"7.md", "0012.md", "+9.md"}, {}, 13},  // other forms of numbers
      {{"7.md", "007.md"}, {7}, 8},
      {{"9223372036854775808.md"}, {}, 1},
  };
  for (const auto& [files, numbers, next] : cases) {
    SCOPED_TRACE(files[0]);
    fs::remove_all(context.paths.dayFolder(today));
    for (const char* name : files) writeFile(file(name, today), readable);
    EXPECT_EQ(listed(today), numbers);
    EXPECT_EQ(store.createMemo(today, {}).seqNumber, next);
    EXPECT_EQ(store.nextSeqNumber(today), next + 1);
  }
  EXPECT_THAT(listed(tomorrow), IsEmpty());
  EXPECT_EQ(store.nextSeqNumber(tomorrow), 1);
  EXPECT_FALSE(fs::exists(context.paths.dayFolder(tomorrow)));
}

TEST_F(DayStoreTest, DamagedFilesAreLoggedAndKeepTheirNumber) {
  writeFile(file("001.md", today), readable);
  writeFile(file("002.md", today), "no header");
  writeFile(file("003.md", today), "---\nmood: abc\n---\n");
  writeFile(file("004.md", today), "---\ntime: \xFF\n---\n");
  testing::internal::CaptureStderr();
  EXPECT_THAT(listed(today), ElementsAre(1));
  const std::string log = testing::internal::GetCapturedStderr();
  const std::string start =
      "[storage] ⚠️ DayStore.listMemos: 跳过无法解析的 memo 文件 ";
  EXPECT_THAT(log, HasSubstr(start + "002.md：没有文件头"));
  EXPECT_THAT(log, HasSubstr(start + "003.md：文件头有误，第 2 行：mood"));
  EXPECT_THAT(log, HasSubstr(start + "004.md：文件不是有效的 UTF-8 文本"));
  EXPECT_EQ(store.createMemo(today, {}).seqNumber, 5);
}

TEST_F(DayStoreTest, DatesThatHoldMemos) {
  for (const char* name :
       {"2026-03-01/001.md", "2025-12-31/abc.md", "1999-01-01/901.md", "2026-03-02/a.png",
        "2026-03-04/.001.md", "2026-03-05/001.MD", "2026-3-6/001.md", "2026-02-30/001.md",
        "2026-03-07x/001.md", ".meta/001.md", "_config/001.md", ".2026-03-08/001.md",
        "2026/2026-03-09/1.md", "2026-03-10", "2026-03-03/folder/001.md"})
    writeFile(folder.path() / name, readable);
  EXPECT_THAT(store.listAllDates(),
              ElementsAre(day("1999-01-01"), day("2025-12-31"), day("2026-03-01")));
  fs::remove_all(folder.path());
  EXPECT_THAT(store.listAllDates(), IsEmpty());
}

TEST_F(DayStoreTest, WhatAChangeIsComparedWith) {
  // The identity on disk and the memo's, the expected body (null: anything), its number.
  const std::tuple<const char*, const char*, const char*, std::int64_t, std::optional<Kind>>
      cases[] = {
          {"a", "a", nullptr, 1, {}},
          {"a", "a", "old", 1, {}},
          {nullptr, "b", "old", 1, {}},
          {"", "", "old", 1, {}},
          {"a", "a", "old", 2, Kind::missingMemo},
          {"a", "b", "old", 1, Kind::identityChanged},
          {"a", nullptr, "old", 1, Kind::identityChanged},
          {"a", "a", "older", 1, Kind::conflict},
          {nullptr, "b", "older", 1, Kind::conflict},
          {"a", "b", "older", 1, Kind::identityChanged},
      };
  const auto identity = [](const char* id) {
    return id == nullptr ? std::nullopt : std::optional<std::string>(id);
  };
  for (const auto& [idOnDisk, id, expectedBody, number, failure] : cases)
    for (const auto change : {&DayStore::updateMemo, &DayStore::commitMemo}) {
      SCOPED_TRACE(testing::PrintToString(std::tuple(idOnDisk, id, expectedBody, number)));
      fs::remove_all(context.paths.versionsFolder());
      Memo memo = Memo::empty(1, clock);
      memo.memoId = identity(idOnDisk);
      memo.body = "old";
      store.memoStore().write(memo, today);
      std::optional<Memo> expected;
      if (expectedBody != nullptr) (expected = memo)->body = expectedBody;
      memo.memoId = identity(id);
      memo.body = "new";
      memo.seqNumber = number;
      const std::string before = treeOf(folder.path());
      EXPECT_EQ(kindOf<WriteError>([&] { (store.*change)(memo, today, expected); }), failure);
      if (failure) {
        EXPECT_EQ(treeOf(folder.path()), before);
        continue;
      }
      EXPECT_EQ(store.memoStore().read(today, 1), memo);
      (store.*change)(memo, today, memo);  // changes nothing
      const bool keepsOne = change == &DayStore::commitMemo && identity(idOnDisk) == "a";
      EXPECT_THAT(VersionStore(context).listVersions(today, 1, {}), SizeIs(keepsOne ? 1 : 0));
    }
}

TEST_F(DayStoreTest, DamagedFileIsNotReplaced) {
  Memo memo = store.createMemo(today, {.body = "old"});
  writeFile(file("001.md", today), "damaged");
  EXPECT_THROW(store.updateMemo(memo, today, {}), ParseError);
  EXPECT_THROW(store.commitMemo(memo, today, {}), ParseError);
  EXPECT_THROW(store.deleteMemo(today, memo), ParseError);
  EXPECT_THROW((void)store.moveMemo(memo, today, tomorrow), ParseError);
  EXPECT_EQ(readFile(file("001.md", today)), "damaged");
}

TEST_F(DayStoreTest, MemoWithSegmentsMovesAndIsTrashedUnlessItChanged) {
  AudioTranscript transcript{.text = "话", .segments = {{.text = "话"}}};
  Memo memo = store.createMemo(today, {.audioTranscripts = {{"a.m4a", transcript}}});
  memo = store.moveMemo(memo, today, tomorrow);
  Memo stale = memo;
  stale.body = "别处读到的";
  EXPECT_FAILURE(WriteError, conflict, store.moveMemo(stale, tomorrow, today));
  EXPECT_FAILURE(WriteError, conflict, TrashStore(context).trashMemo(tomorrow, stale));
  (void)TrashStore(context).trashMemo(tomorrow, memo);
  EXPECT_EQ(TrashStore(context).listTrash().size(), 1U);
}

TEST_F(DayStoreTest, DeletesNoFileThatIsNoAttachment) {
  const Memo other = store.createMemo(today, {.body = "other"});
  const Memo memo = store.createMemo(
      today, {.attachments = {"gone.png", "../kept.txt", "001.md", "full", "b.png"}});
  writeFile(file("b.png", today), "b");
  writeFile(file("full/x", today), "x");
  writeFile(folder.path() / "kept.txt", "kept");
  Memo stale = memo;
  stale.body = "stale";
  EXPECT_FAILURE(WriteError, conflict, store.deleteMemo(today, stale));
  EXPECT_TRUE(fs::exists(file("b.png", today)));
  store.deleteMemo(today, memo);
  EXPECT_EQ(store.listMemos(today), std::vector{other});
  EXPECT_FALSE(fs::exists(file("b.png", today)));
  EXPECT_TRUE(fs::exists(file("full/x", today)));
  EXPECT_EQ(readFile(folder.path() / "kept.txt"), "kept");
}

class MemoStoreTest : public StoreTest {
 protected:
  MemoStore memos{context};
  Day today = day("2026-03-01");
  fs::path file = folder.path() / "2026-03-01" / "007.md";
};

TEST_F(MemoStoreTest, WhatCouldNotBeReadAgainIsNotWritten) {
  Memo memo = Memo::empty(7, clock);
  memo.body = "good";
  memos.write(memo, today);
  const std::string before = treeOf(folder.path());
  for (std::string Memo::*field : {&Memo::body, static_cast<std::string Memo::*>(&Memo::time)}) {
    Memo broken = memo;
    broken.*field = "a\xE6\x97";
    EXPECT_THROW(memos.write(broken, today), YamlError);
    EXPECT_THROW((void)memos.create(broken, today), YamlError);
  }
  EXPECT_EQ(treeOf(folder.path()), before);
}

}  // namespace
}  // namespace nomely::test
