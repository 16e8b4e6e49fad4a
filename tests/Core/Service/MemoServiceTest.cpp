#include <gmock/gmock.h>
#include <sys/stat.h>

#include "Core/Query/TagManagementStore.h"
#include "Core/Service/ServiceTest.h"
#include "Core/Storage/WriteError.h"
#include "Platform/Concurrency/NotificationCenter.h"
#include "Platform/Files/FileError.h"
#include "Support/ErrorKind.h"

namespace nomely::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class MemoServiceTest : public ServiceTest {};

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

TEST_F(MemoServiceTest, EditsKeepWhatTheyReplace) {
  Memo memo = service.create(today, {.body = "一"});
  memo = service.append(today, service.edit(today, memo, "二 #b"), "三");
  EXPECT_EQ(memo.body, "二 #b\n\n三");
  EXPECT_THAT(memo.tags, ElementsAre("b"));
  EXPECT_EQ(service.change(today, memo, [](Memo&) {}), memo) << "no change, no snapshot";
  EXPECT_THAT(pastOf(memo), ElementsAre("二 #b", "一"));
  Memo stale = memo;
  stale.body = "别的";
  EXPECT_EQ(kindOf<WriteError>([&] { service.edit(today, stale, "x"); }),
            WriteError::Kind::conflict);
  EXPECT_EQ(kindOf<WriteError>([&] { service.commit(today, memo, stale); }),
            WriteError::Kind::conflict);
}

TEST_F(MemoServiceTest, AClockThatGoesBackLosesNoState) {
  Memo memo = service.create(today, {.body = "0"});
  for (int i = 1; i <= 20; ++i) memo = service.edit(today, memo, std::to_string(i));
  clock.set("2019-01-01 00:00:00");
  memo = service.edit(today, memo, "21");
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
  const struct {
    const char* content;
    const char* body;
  } cases[] = {{"\xEF\xBB\xBF---\ntime: 08:00\nid: memo_bom\n---\n\n有头", "有头"},
               {"---\r\ntime: 08:00\r\n---\r\n\r\n换行\r\n", "换行\n"},
               {"只有正文\n第二行", "只有正文\n第二行"}};
  std::int64_t number = 0;
  for (const auto& [content, body] : cases) {
    SCOPED_TRACE(body);
    writeFile(fileOf(++number), content);
    EXPECT_THROW((void)read(number), Error);
    EXPECT_THAT(service.mendsOf(today, number), SizeIs(testing::Ge(1U)));
    const Memo memo = service.mend(today, number).value();
    EXPECT_EQ(memo.body, body);
    EXPECT_EQ(read(number), memo);
    const auto originals = service.versions().originals(memo.memoId.value());
    ASSERT_THAT(originals, SizeIs(1));
    EXPECT_EQ(service.versions().contentOf(originals[0]), content);
  }
  writeFile(fileOf(++number), "---\nmood: abc\n---\n");
  EXPECT_EQ(service.mend(today, number), std::nullopt);
  EXPECT_EQ(service.mend(today, 1), std::nullopt) << "nothing to mend";
}

}  // namespace
}  // namespace nomely::test
