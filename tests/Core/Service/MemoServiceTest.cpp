#include <sys/stat.h>

#include "Core/Query/SearchIndex.h"
#include "Core/Query/TagManagementStore.h"
#include "Core/Service/MemoService.h"
#include "Core/Storage/WriteError.h"
#include "Platform/Concurrency/NotificationCenter.h"
#include "Platform/Files/FileError.h"
#include "Support/ErrorKind.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

// The service on an empty root, with an index that nobody keeps in step by hand. What the index
// holds is compared with the disk at the end of every test.
class MemoServiceTest : public StoreTest {
 protected:
  void SetUp() override { (void)index.allMemoEntries(); }
  void TearDown() override { EXPECT_EQ(listed(index), listed(SearchIndex(context, jobs))); }

  static std::vector<std::string> listed(SearchIndex& index) {
    std::vector<std::string> all;
    for (const MemoEntry& entry : index.allMemoEntries())
      all.push_back(entry.date.string() + "/" + std::to_string(entry.memo->seqNumber) + " " +
                    entry.memo->memoId.value_or("-") + " " + entry.memo->body);
    return all;
  }
  static std::vector<std::string> listed(SearchIndex&& index) { return listed(index); }

  [[nodiscard]] fs::path fileOf(std::int64_t seqNumber) const {
    return context.paths.memoFile(today, seqNumber);
  }
  [[nodiscard]] Memo read(std::int64_t seqNumber) const {
    return store.memoStore().read(today, seqNumber).value();
  }
  [[nodiscard]] std::vector<std::string> pastOf(const Memo& memo) const {
    std::vector<std::string> bodies;
    for (const VersionEntry& version :
         service.versions().listVersions(today, memo.seqNumber, memo.memoId))
      bodies.push_back(version.memo.body);
    return bodies;
  }

  JobPool jobs{1};
  SearchIndex index{context, jobs};
  MemoService service{context};
  Day today = day("2026-03-01");
};

constexpr auto foreign = "---\n# 手写\ntime: 08:00\nweather: 小雨\n---\n\n旧文 #a\n";

TEST_F(MemoServiceTest, TypedTextBecomesAMemo) {
  const Memo memo = service.create(today, {.body = "\n \n去海边 #旅行", .tags = {"x"}});
  EXPECT_EQ(memo.body, "去海边 #旅行");
  EXPECT_THAT(memo.tags, ElementsAre("x", "旅行"));
  EXPECT_EQ(memo.source, "nomely");
  EXPECT_EQ(read(1), memo);
  EXPECT_EQ(service.create(today, {.body = "x", .source = "feishu"}).source, "feishu");
  Memo changed = memo;
  changed.body = "\n\n新";
  changed = service.commit(today, changed, std::nullopt);
  EXPECT_EQ(changed.body, "新");
  EXPECT_TRUE(service.change(today, changed, [](Memo& each) { each.setPinned(true); }).pinned);
}

TEST_F(MemoServiceTest, AClockThatGoesBackLosesNoState) {
  Memo memo = service.create(today, {.body = "0"});
  for (int i = 1; i <= 20; ++i) memo = service.edit(today, memo, std::to_string(i));
  clock.set("2019-01-01 00:00:00");
  memo = service.edit(today, memo, "21");
  clock.advance(std::chrono::seconds(1));
  EXPECT_EQ(service.change(today, memo, [](Memo&) {}), memo) << "no change, no snapshot";
  EXPECT_EQ(pastOf(memo).front(), "20");
  const auto past = service.versions().listVersions(today, 1, memo.memoId);
  memo = service.restoreVersion(today, memo, past.back());
  EXPECT_EQ(memo.body, past.back().memo.body);
  EXPECT_EQ(pastOf(memo).front(), "21");
  EXPECT_THAT(pastOf(memo), SizeIs(20));
}

TEST_F(MemoServiceTest, ANoteOfAnotherProgramKeepsItsPast) {
  writeFile(fileOf(1), foreign);
  ::chmod(fileOf(1).c_str(), 0600);
  index.invalidateCache();
  std::vector<std::string> told;
  const Subscription telling = NotificationCenter::shared().observe(
      Notifications::originalKept, [&](const std::string& memoId) { told.push_back(memoId); });
  const Memo edited = service.edit(today, read(1), "新文");
  EXPECT_THAT(told, ElementsAre(edited.memoId.value()));
  EXPECT_THAT(pastOf(edited), ElementsAre("旧文 #a\n"));
  auto originals = service.versions().originals(*edited.memoId);
  ASSERT_THAT(originals, SizeIs(1));
  EXPECT_EQ(service.versions().contentOf(originals[0]), foreign);
  // Every copy of it is as private as it was.
  for (const auto& file : fs::recursive_directory_iterator(context.paths.versionsByIdFolder())) {
    const std::string extension = file.path().extension();
    if (extension == ".md" || extension == ".original") {
      EXPECT_EQ(file.status().permissions(), fs::perms(0600)) << file.path();
    }
  }
  EXPECT_EQ(fs::status(fileOf(1)).permissions(), fs::perms(0600));
  service.edit(today, edited, "更新");
  EXPECT_THAT(service.versions().originals(*edited.memoId), SizeIs(1)) << "nothing foreign left";
}

TEST_F(MemoServiceTest, BulkChangesGiveNotesTheirPastToo) {
  writeFile(fileOf(1), foreign);
  const Memo typed = service.create(today, {.body = "不带", .tags = {"a/b"}});
  index.invalidateCache();
  const TagManagementStore tags(service, index);
  const TagChange planned = tags.deleteTag("a", {.isDry = true});
  EXPECT_EQ(planned, (TagChange{.memos = 2, .bodies = 1}));
  EXPECT_THAT(pastOf(typed), IsEmpty());
  EXPECT_EQ(tags.deleteTag("a"), planned);
  EXPECT_THAT(pastOf(read(1)), ElementsAre("旧文 #a\n"));
  EXPECT_EQ(read(2).updatedAt, typed.updatedAt);
}

TEST_F(MemoServiceTest, AttachmentsComeInWholeOrNotAtAll) {
  const fs::path gbk = folder.path().parent_path() / (folder.path().filename().string() + "-f") /
                       "\xB1\xCA\xBC\xC7.TXT";
  writeFile(gbk, "x");
  const Memo memo = service.create(today, {.body = "附"}, {gbk});
  ASSERT_THAT(memo.attachments, SizeIs(1));
  EXPECT_EQ(memo.originalNames.at(memo.attachments[0]), "笔记.TXT");
  const std::string before = treeOf(folder.path());
  EXPECT_THROW((void)service.create(today, {}, {gbk, gbk.parent_path() / "missing"}),
               AttachmentManager::ImportError);
  EXPECT_THROW((void)service.attach(today, memo, {gbk, gbk.parent_path()}), Error);
  EXPECT_EQ(treeOf(folder.path()), before) << "nothing in the attachment trash either";
  fs::remove_all(gbk.parent_path());
}

TEST_F(MemoServiceTest, AReceivedMemoIsAsItsMakerSays) {
  const fs::path source = folder.path() / "outside";
  writeFile(source, "bytes");
  const AudioTranscript transcript{.text = "字", .segments = {}};
  const Memo memo = service.receive(
      today, {.body = "正文 #标签 #_x", .tags = {"飞书"}, .source = "feishu", .nextNumber = 7},
      {{.path = source, .extension = "m4a", .originalName = "", .transcript = transcript},
       {.path = source, .extension = "", .originalName = "报告.pdf"},
       {.path = source, .extension = "../x", .originalName = ""}});
  EXPECT_EQ(memo.seqNumber, 7);
  EXPECT_THAT(memo.tags, ElementsAre("飞书"));
  ASSERT_THAT(memo.attachments, SizeIs(3));
  const std::string& voice = memo.attachments[0];
  EXPECT_TRUE(voice.ends_with(".m4a")) << voice;
  EXPECT_EQ(memo.audioTranscripts.at(voice).text, "字");
  EXPECT_THAT(memo.originalNames, ElementsAre(testing::Pair(memo.attachments[1], "报告.pdf")));
  for (const std::size_t bare : {1, 2}) EXPECT_THAT(memo.attachments[bare], SizeIs(8));
  EXPECT_EQ(read(7), memo);
  EXPECT_EQ(service.create(today, {.nextNumber = 7}).seqNumber, 8) << "a taken one is passed over";
}

TEST_F(MemoServiceTest, AFileTooLargeForANoteHidesNoOther) {
  (void)service.create(today, {.body = "一"});
  writeFile(fileOf(2), "---\ntime: 08:00\n---\n");
  fs::resize_file(fileOf(2), (std::uintmax_t{64} << 20) + 1);
  EXPECT_THAT(store.listMemos(today), SizeIs(1));
  EXPECT_THROW((void)store.memoStore().read(today, 2), FileError);
}

TEST_F(MemoServiceTest, MendsWhatOtherProgramsBroke) {
  const std::string content = "\xEF\xBB\xBF---\r\ntime: 08:00\r\nid: memo_bom\r\n---\r\n\r\n有头";
  writeFile(fileOf(1), content);
  EXPECT_THROW((void)read(1), Error);
  EXPECT_THAT(service.mendsOf(today, 1), SizeIs(2));
  const Memo memo = service.mend(today, 1).value();
  EXPECT_EQ(memo.body, "有头");
  EXPECT_EQ(read(1), memo);
  const auto originals = service.versions().originals(memo.memoId.value());
  ASSERT_THAT(originals, SizeIs(1));
  EXPECT_EQ(service.versions().contentOf(originals[0]), content);
  writeFile(fileOf(2), "---\nmood: abc\n---\n");
  EXPECT_EQ(service.mend(today, 2), std::nullopt);
  EXPECT_EQ(service.mend(today, 1), std::nullopt) << "nothing to mend";
}

class MemoRecoveryTest : public MemoServiceTest {
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
}

}  // namespace
}  // namespace nomely::test
