#include <gmock/gmock.h>

#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Storage/AttachmentManager.h"
#include "Core/Storage/DayStore.h"
#include "Core/Storage/TrashStore.h"
#include "Core/Storage/WriteError.h"
#include "Platform/Files/FileError.h"
#include "Support/ErrorKind.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
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

TEST_F(DayStoreTest, CreatedMemoReadsBack) {
  const Memo memo = store.createMemo(today, {.body = "你好\n",
                                             .tags = {"生活"},
                                             .mood = 3,
                                             .attachments = {"a.png"},
                                             .source = "flomo",
                                             .sourceId = "7",
                                             .originalNames = {{"a.png", "A.PNG"}}});
  Memo expected;
  expected.seqNumber = 1;
  expected.schemaVersion = 2;
  expected.memoId = memo.memoId;
  expected.createdAt = expected.updatedAt = DateFormatters::timestamp(clock.now());
  expected.time = "09:30";
  expected.body = "你好\n";
  expected.tags = {"生活"};
  expected.mood = 3;
  expected.attachments = {"a.png"};
  expected.source = "flomo";
  expected.sourceId = "7";
  expected.originalNames = {{"a.png", "A.PNG"}};
  EXPECT_EQ(memo, expected);
  EXPECT_THAT(memo.memoId.value(), testing::MatchesRegex("memo_[0-9a-f]{32}"));
  EXPECT_EQ(store.listMemos(today), std::vector{memo});
  EXPECT_EQ(store.createMemo(today, {.time = "late"}).time, "late");
  EXPECT_NE(store.listMemos(today)[0].memoId, memo.memoId);
}

TEST_F(DayStoreTest, NumbersOfADay) {
  const struct {
    const char* name;
    std::vector<const char*> files;
    std::vector<std::int64_t> listed;
    std::int64_t next;
  } cases[] = {
      {"empty folder", {}, {}, 1},
      {"gap stays", {"001.md", "005.md"}, {5, 1}, 6},
      {"beyond three digits", {"999.md", "1000.md"}, {1000, 999}, 1001},
      {"no numbers", {"abc.md", "0.md", "-3.md", "000.md", "1.5.md", ".md"}, {}, 1},
      {"other form of the number", {"7.md", "0012.md", "+9.md"}, {}, 13},
      {"both forms", {"7.md", "007.md"}, {7}, 8},
      {"other files", {"day.yaml", "020.MD", "021.md.bak", "022", "a.png"}, {}, 1},
      {"hidden", {".030.md", ".nomely-x.tmp"}, {}, 1},
      {"beyond 64 bits", {"9223372036854775808.md"}, {}, 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    fs::remove_all(context.paths.dayFolder(today));
    fs::create_directories(context.paths.dayFolder(today));
    for (const char* name : c.files) writeFile(file(name, today), readable);
    EXPECT_EQ(listed(today), c.listed);
    EXPECT_EQ(store.nextSeqNumber(today), c.next);
    EXPECT_EQ(store.createMemo(today, {}).seqNumber, c.next);
    EXPECT_EQ(store.nextSeqNumber(today), c.next + 1);
  }
  EXPECT_THAT(listed(tomorrow), IsEmpty());
  EXPECT_EQ(store.nextSeqNumber(tomorrow), 1);
  EXPECT_FALSE(fs::exists(context.paths.dayFolder(tomorrow)));
}

TEST_F(DayStoreTest, HighestNumberOfAll) {
  writeFile(file("9223372036854775806.md", today), readable);
  EXPECT_EQ(store.createMemo(today, {}).seqNumber, INT64_MAX);
  const std::string before = treeOf(folder.path());
  EXPECT_EQ(kindOf<FileError>([&] { (void)store.createMemo(today, {}); }),
            FileError::Kind::tooLarge);
  EXPECT_EQ(treeOf(folder.path()), before);
}

TEST_F(DayStoreTest, DamagedFilesAreLoggedAndKeepTheirNumber) {
  writeFile(file("001.md", today), readable);
  writeFile(file("002.md", today), "no header");
  writeFile(file("003.md", today), "---\nmood: abc\n---\n");
  writeFile(file("004.md", today), "---\ntime: \xFF\n---\n");
  fs::create_directories(file("005.md", today));
  testing::internal::CaptureStderr();
  EXPECT_THAT(listed(today), ElementsAre(1));
  const std::string log = testing::internal::GetCapturedStderr();
  const std::string start =
      "[storage] ⚠️ DayStore.listMemos: 跳过无法解析的 memo 文件 ";
  EXPECT_THAT(log, HasSubstr(start + "002.md：没有文件头"));
  EXPECT_THAT(log, HasSubstr(start + "003.md：文件头有误，第 2 行：mood"));
  EXPECT_THAT(log, HasSubstr(start + "004.md：文件不是有效的 UTF-8 文本"));
  EXPECT_THAT(log, HasSubstr(start + "005.md："));
  EXPECT_EQ(store.createMemo(today, {}).seqNumber, 6);
  EXPECT_EQ(readFile(file("002.md", today)), "no header");
}

TEST_F(DayStoreTest, FolderThatCannotBeListed) {
  writeFile(context.paths.dayFolder(today), "a file");
  EXPECT_EQ(kindOf<FileError>([&] { (void)store.listMemos(today); }),
            FileError::Kind::notADirectory);
  EXPECT_EQ(store.nextSeqNumber(today), 1);
}

TEST_F(DayStoreTest, DatesThatHoldMemos) {
  const struct {
    const char* name;
    bool expected;
  } files[] = {
      {"2026-03-01/001.md", true},   {"2025-12-31/abc.md", true},   {"2026-03-02/a.png", false},
      {"2026-03-04/.001.md", false}, {"2026-03-05/001.MD", false},  {"2026-3-6/001.md", false},
      {"2026-02-30/001.md", false},  {"2026-03-07x/001.md", false}, {".meta/001.md", false},
      {"_config/001.md", false},     {".2026-03-08/001.md", false}, {"2026/2026-03-09/1.md", false},
      {"2026-03-10", false},         {"1999-01-01/901.md", true},
  };
  std::vector<Day> expected;
  for (const auto& [name, isDate] : files) {
    writeFile(folder.path() / name, readable);
    if (isDate) expected.push_back(day(std::string_view(name).substr(0, 10)));
  }
  fs::create_directories(folder.path() / "2026-03-03");
  std::ranges::sort(expected);
  EXPECT_EQ(store.listAllDates(), expected);
  fs::remove_all(folder.path());
  EXPECT_THAT(store.listAllDates(), IsEmpty());
}

TEST_F(DayStoreTest, CheckInFrontOfAChange) {
  const struct {
    const char* name;
    std::optional<std::string> idOnDisk;
    void (*change)(Memo& memo, std::optional<Memo>& expected);
    std::optional<Kind> failure;
  } cases[] = {
      {"nothing expected", "a", [](Memo&, std::optional<Memo>& expected) { expected.reset(); }, {}},
      {"expected as it is", "a", [](Memo&, std::optional<Memo>&) {}, {}},
      {"gone", "a", [](Memo& memo, std::optional<Memo>&) { memo.seqNumber = 2; },
       Kind::missingMemo},
      {"another memo", "a", [](Memo& memo, std::optional<Memo>&) { memo.memoId = "b"; },
       Kind::identityChanged},
      {"identity lost", "a", [](Memo& memo, std::optional<Memo>&) { memo.memoId.reset(); },
       Kind::identityChanged},
      {"legacy file gets an identity",
       {},
       [](Memo& memo, std::optional<Memo>&) { memo.memoId = "b"; },
       {}},
      {"changed elsewhere", "a",
       [](Memo&, std::optional<Memo>& expected) { expected->body = "older"; }, Kind::conflict},
      {"legacy file changed elsewhere",
       {},
       [](Memo&, std::optional<Memo>& expected) { expected->pinned = true; },
       Kind::conflict},
      {"identity before conflict", "a",
       [](Memo& memo, std::optional<Memo>& expected) {
         memo.memoId = "b";
         expected->body = "older";
       },
       Kind::identityChanged},
  };
  using Change = void (DayStore::*)(const Memo&, Day, const std::optional<Memo>&) const;
  for (const auto& c : cases)
    for (const Change change : {&DayStore::updateMemo, &DayStore::commitMemo}) {
      SCOPED_TRACE(c.name);
      Memo memo = Memo::empty(1, clock);
      memo.memoId = c.idOnDisk;
      memo.body = "old";
      store.memoStore().write(memo, today);
      std::optional<Memo> expected = memo;
      memo.body = "new";
      c.change(memo, expected);
      const std::string before = treeOf(folder.path());
      EXPECT_EQ(kindOf<WriteError>([&] { (store.*change)(memo, today, expected); }), c.failure);
      if (c.failure) {
        EXPECT_EQ(treeOf(folder.path()), before);
      } else {
        EXPECT_EQ(store.memoStore().read(today, 1), memo);
      }
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

TEST_F(DayStoreTest, SegmentsMakeEveryExpectationFail) {
  AudioTranscript transcript{.text = "话", .segments = {{}}};
  const Memo memo = store.createMemo(today, {.audioTranscripts = {{"a.m4a", transcript}}});
  EXPECT_EQ(kindOf<WriteError>([&] { store.updateMemo(memo, today, memo); }), Kind::conflict);
  EXPECT_EQ(kindOf<WriteError>([&] { store.updateMemo(memo, today, {}); }), std::nullopt);
}

TEST_F(DayStoreTest, MemoWithSegmentsMovesAndIsTrashedUnlessItChanged) {
  AudioTranscript transcript{.text = "话", .segments = {{.text = "话"}}};
  Memo memo = store.createMemo(today, {.audioTranscripts = {{"a.m4a", transcript}}});
  memo = store.moveMemo(memo, today, tomorrow);
  Memo stale = memo;
  stale.body = "别处读到的";
  EXPECT_EQ(kindOf<WriteError>([&] { (void)store.moveMemo(stale, tomorrow, today); }),
            Kind::conflict);
  EXPECT_EQ(kindOf<WriteError>([&] { (void)TrashStore(context).trashMemo(tomorrow, stale); }),
            Kind::conflict);
  (void)TrashStore(context).trashMemo(tomorrow, memo);
  EXPECT_EQ(TrashStore(context).listTrash().size(), 1U);
}

TEST_F(DayStoreTest, OnlyCommitKeepsASnapshot) {
  Memo memo = store.createMemo(today, {.body = "1"});
  memo.body = "2";
  store.updateMemo(memo, today, {});
  EXPECT_FALSE(fs::exists(context.paths.versionsFolder()));
  memo.body = "3";
  store.commitMemo(memo, today, {});
  const std::string tree = treeOf(context.paths.versionsFolder());
  EXPECT_THAT(tree, HasSubstr("---\n\n2\n"));
  EXPECT_EQ(store.memoStore().read(today, 1), memo);
}

TEST_F(DayStoreTest, FailedSnapshotStopsTheCommit) {
  Memo memo = store.createMemo(today, {.body = "1"});
  writeFile(context.paths.versionsFolder(), "in the way");
  memo.body = "2";
  EXPECT_THROW(store.commitMemo(memo, today, {}), FileError);
  EXPECT_EQ(store.memoStore().read(today, 1)->body, "1");
}

TEST_F(DayStoreTest, DeletesTheMemoAndTheFilesThatItNames) {
  const Memo other = store.createMemo(today, {.body = "other"});
  const Memo memo = store.createMemo(
      today, {.attachments = {"gone.png", "a.png", "../kept.txt", "001.md", "full", "b.png"}});
  writeFile(file("a.png", today), "a");
  writeFile(file("b.png", today), "b");
  writeFile(file("full/x", today), "x");
  writeFile(folder.path() / "kept.txt", "kept");
  Memo stale = memo;
  stale.body = "stale";
  EXPECT_EQ(kindOf<WriteError>([&] { store.deleteMemo(today, stale); }), Kind::conflict);
  EXPECT_TRUE(fs::exists(file("a.png", today)));
  store.deleteMemo(today, memo);
  EXPECT_EQ(store.listMemos(today), std::vector{other});
  EXPECT_FALSE(fs::exists(file("a.png", today)));
  EXPECT_FALSE(fs::exists(file("b.png", today)));
  EXPECT_TRUE(fs::exists(file("full/x", today)));
  EXPECT_EQ(readFile(folder.path() / "kept.txt"), "kept");
  EXPECT_FALSE(fs::exists(context.paths.trashFolder()));
}

TEST_F(DayStoreTest, MovesTheMemoWithItsAttachments) {
  writeFile(file("own.png", today), "own");
  writeFile(file("shared.png", today), "shared");
  const Memo memo =
      store.createMemo(today, {.body = "b", .attachments = {"own.png", "shared.png"}});
  const Memo remaining = store.createMemo(today, {.attachments = {"shared.png"}});
  writeFile(file("005.md", tomorrow), readable);
  clock.set("2026-03-05 10:11:12");

  const Memo moved = store.moveMemo(memo, today, tomorrow);
  Memo expected = memo;
  expected.seqNumber = 6;
  EXPECT_EQ(moved, expected) << "updatedAt stays too";
  EXPECT_EQ(store.memoStore().read(tomorrow, 6), moved);
  EXPECT_EQ(store.listMemos(today), std::vector{remaining});
  EXPECT_EQ(readFile(file("own.png", tomorrow)), "own");
  EXPECT_EQ(readFile(file("shared.png", tomorrow)), "shared");
  EXPECT_EQ(readFile(file("shared.png", today)), "shared");
  EXPECT_FALSE(fs::exists(file("own.png", today)));
  EXPECT_EQ(readFile(context.paths.attachmentTrashFolder() / "2026-03-05_101112" / "own.png"),
            "own");
}

TEST_F(DayStoreTest, MovesWithinTheDay) {
  writeFile(file("a.png", today), "a");
  const Memo memo = store.createMemo(today, {.attachments = {"a.png"}});
  EXPECT_EQ(store.moveMemo(memo, today, today).seqNumber, 2);
  EXPECT_THAT(listed(today), ElementsAre(2));
  EXPECT_EQ(readFile(file("a.png", today)), "a");
}

TEST_F(DayStoreTest, RefusedMoveLeavesTheMemo) {
  using ImportError = AttachmentManager::ImportError;
  const struct {
    const char* name;
    const char* attachment;
    ImportError::Kind expected;
  } cases[] = {
      {"same name, other content", "differs.png", ImportError::Kind::copyFailed},
      {"attachment is gone", "gone.png", ImportError::Kind::fileNotFound},
      {"attachment outside the folder", "../x", ImportError::Kind::fileNotFound},
  };
  writeFile(file("differs.png", today), "1");
  writeFile(file("differs.png", tomorrow), "2");
  writeFile(folder.path() / "x", "x");
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const Memo memo = store.createMemo(today, {.attachments = {c.attachment}});
    const std::string before = treeOf(folder.path());
    EXPECT_EQ(kindOf<ImportError>([&] { (void)store.moveMemo(memo, today, tomorrow); }),
              c.expected);
    EXPECT_EQ(treeOf(folder.path()), before);
  }
  Memo stale = store.createMemo(today, {});
  stale.body = "stale";
  EXPECT_EQ(kindOf<WriteError>([&] { (void)store.moveMemo(stale, today, tomorrow); }),
            Kind::conflict);
}

TEST_F(DayStoreTest, MoveOutlivesAFailureToClearUp) {
  writeFile(file("a.png", today), "a");
  writeFile(context.paths.trashFolder(), "in the way");
  const Memo memo = store.createMemo(today, {.attachments = {"a.png"}});
  testing::internal::CaptureStderr();
  const Memo moved = store.moveMemo(memo, today, tomorrow);
  EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("DayStore.trashUnnamedFiles"));
  EXPECT_EQ(store.listMemos(tomorrow), std::vector{moved});
  EXPECT_THAT(listed(today), IsEmpty());
  EXPECT_EQ(readFile(file("a.png", today)), "a");
}

}  // namespace
}  // namespace nomely::test
