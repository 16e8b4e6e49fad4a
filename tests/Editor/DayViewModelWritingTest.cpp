#include <thread>

#include "Core/Storage/VersionStore.h"
#include "Core/Storage/WriteError.h"
#include "Editor/DayViewModelFixture.h"
#include "Support/ErrorKind.h"

namespace nomely::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class DayViewModelWritingTest : public DayViewModelTest {
 protected:
  void loadToday() {
    model->loadDay(today);
    ASSERT_TRUE(isLoaded());
  }
  // As another program would: neither the model nor its index learns of it.
  void changeElsewhere(const Memo& memo, const std::string& body) {
    Memo changed = memo;
    changed.body = body;
    store.updateMemo(changed, today, {});
  }
};

TEST_F(DayViewModelWritingTest, UpdateShowsAtOnceAndKeepsASnapshot) {
  add(today, "旧文");
  loadToday();
  std::vector<std::string> events;
  const Subscription watch = model->saveState.observe([&](const SaveState& state) {
    events.push_back(state == SaveState::saving() ? "saving" : "saved");
  });
  model->onSavedSuccessfully = [&] { events.push_back("callback"); };
  Memo memo = listed("旧文");
  memo.body = "新文";
  model->updateMemo(memo);
  EXPECT_THAT(shown(), ElementsAre("新文"));
  EXPECT_THAT(ofTheDay(), ElementsAre("新文"));
  ASSERT_TRUE(isSettled());
  EXPECT_THAT(events, ElementsAre("saving", "callback", "saved"));
  EXPECT_TRUE(isSaved());
  EXPECT_EQ(onDisk(today, 1).body, "新文");
  EXPECT_EQ(VersionStore(context).listVersions(today, 1, {}).at(0).memo.body, "旧文");
  EXPECT_EQ(index.search("新文", 50).size(), 1U);
}

TEST_F(DayViewModelWritingTest, FailedUpdateShowsWhatIsOnDisk) {
  const Memo memo = add(today, "读到的");
  loadToday();
  changeElsewhere(memo, "别处写的");
  Memo mine = listed("读到的");
  mine.body = "我写的";
  model->updateMemo(mine);
  EXPECT_THAT(shown(), ElementsAre("我写的"));
  ASSERT_TRUE(isSettled());
  EXPECT_THAT(shown(), ElementsAre("别处写的"));
  EXPECT_THAT(ofTheDay(), ElementsAre("别处写的"));
  EXPECT_THAT(failure(), StartsWith("更新笔记失败："));
  EXPECT_EQ(model->lastError.get(), failure());
  EXPECT_EQ(onDisk(today, 1).body, "别处写的");

  mine = listed("别处写的");
  store.deleteMemo(today, mine);
  mine.body = "我又写的";
  model->updateMemo(mine);
  ASSERT_TRUE(isSettled());
  EXPECT_THAT(failure(), StartsWith("更新笔记失败："));
  EXPECT_THAT(shown(), IsEmpty());
  EXPECT_THAT(ofTheDay(), IsEmpty());
}

// A card may hold an older text than the list, or one that no list has any more.
TEST_F(DayViewModelWritingTest, PinAndLockNeverBringAnOldTextBack) {
  add(today, "旧文");
  loadToday();
  const Memo card = listed("旧文");
  Memo memo = card;
  memo.body = "新文";
  model->updateMemo(memo);
  model->togglePinned(card);
  ASSERT_TRUE(comesTrue([&] { return onDisk(today, 1).pinned; }));
  ASSERT_TRUE(isSettled());
  EXPECT_EQ(onDisk(today, 1).body, "新文");
  EXPECT_THAT(shown(), ElementsAre("新文"));

  model->loadDay(yesterday);
  ASSERT_TRUE(isLoaded());
  model->toggleLockedOnTop(card, today);
  ASSERT_TRUE(isSettled());
  EXPECT_THAT(failure(), StartsWith("更新笔记失败："));
  EXPECT_EQ(onDisk(today, 1).body, "新文");
}

TEST_F(DayViewModelWritingTest, MemoComesBackWhenTheChangeThatTookItOutFails) {
  Memo memo = store.createMemo(today, {.body = "录音", .attachments = {"a.m4a"}});
  memo.pinned = true;
  store.updateMemo(memo, today, {});
  const struct {
    const char* name;
    void (DayViewModel::*load)();
    void (*change)(Memo&);
  } cases[] = {
      {"pinned", &DayViewModel::loadPinnedMemos, [](Memo& mine) { mine.pinned = false; }},
      {"filter", &DayViewModel::loadMemosWithAudio, [](Memo& mine) { mine.attachments.clear(); }},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    (*model.*test.load)();
    ASSERT_TRUE(isLoaded());
    ASSERT_EQ(shown().size(), 1U);
    Memo mine = *model->displayMemos.get()[0].memo;
    changeElsewhere(mine, std::string("别处写的") + test.name);
    test.change(mine);
    model->updateMemo(mine);
    EXPECT_THAT(shown(), IsEmpty());
    ASSERT_TRUE(isSettled());
    EXPECT_EQ(shown().size(), 1U);
    EXPECT_THAT(failure(), StartsWith("更新笔记失败："));
  }
}

// Another program wrote the note without an identity. It gets one with the first change, and a
// second change made before the lists know goes on from there.
TEST_F(DayViewModelWritingTest, ListsTakeOverWhatWasStored) {
  writeFile(context.paths.memoFile(today, 1), "---\ntime: '08:00'\n---\n\n旧\n");
  loadToday();
  std::optional<std::exception_ptr> ended;
  Memo mine = *model->allMemos.get().at(0).memo;
  for (const char* body : {"\n\n一", "\n二"}) {
    mine.body = body;
    model->updateMemo(mine);
  }
  ASSERT_TRUE(comesTrue([&] { return onDisk(today, 1).body == "二"; }));
  ASSERT_TRUE(isSettled());
  EXPECT_EQ(failure(), "");
  EXPECT_TRUE(onDisk(today, 1).memoId);
  EXPECT_EQ(*model->allMemos.get().at(0).memo, onDisk(today, 1));
  EXPECT_THAT(model->memos.get(), ElementsAre(onDisk(today, 1)));
  EXPECT_EQ(VersionStore(context).listVersions(today, 1, {}).size(), 2U);
}

TEST_F(DayViewModelWritingTest, FailureDoesNotRollBackOverALaterEdit) {
  const Memo memo = add(today, "读到的");
  loadToday();
  changeElsewhere(memo, "别处写的");
  std::vector<std::vector<std::string>> atFailure;
  const Subscription watch =
      model->lastError.observe([&](const auto&) { atFailure.push_back(shown()); });
  Memo mine = listed("读到的");
  mine.body = "第一次";
  model->updateMemo(mine);
  mine.body = "第二次";
  model->updateMemo(mine);
  ASSERT_TRUE(comesTrue([&] { return atFailure.size() == 2; }));
  EXPECT_THAT(atFailure[0], ElementsAre("第二次"));
  EXPECT_THAT(atFailure[1], ElementsAre("别处写的"));
}

TEST_F(DayViewModelWritingTest, MemoThatNoLongerBelongsLeavesAtOnce) {
  (void)store.createMemo(today, {.body = "有录音", .attachments = {"a.m4a"}});
  Memo pinned = store.createMemo(today, {.body = "钉住"});
  pinned.pinned = pinned.lockedOnTop = true;
  store.updateMemo(pinned, today, {});

  model->loadMemosWithAudio();
  ASSERT_TRUE(isLoaded());
  Memo memo = listed("有录音");
  memo.attachments.clear();
  model->updateMemo(memo);
  EXPECT_THAT(shown(), IsEmpty());

  model->loadPinnedMemos();
  ASSERT_TRUE(isLoaded());
  model->togglePinned(listed("钉住"));
  EXPECT_THAT(shown(), IsEmpty());
  ASSERT_TRUE(isSettled());
  EXPECT_FALSE(onDisk(today, 2).lockedOnTop);
  model->toggleLockedOnTop(onDisk(today, 2), today);
  ASSERT_TRUE(isSettled());
  EXPECT_TRUE(onDisk(today, 2).pinned);
}

// A list without dates of its own still finds the memo's day by its identity.
TEST_F(DayViewModelWritingTest, DateOfAnUpdateIsTheMemosOwn) {
  add(yesterday, "昨天的");
  model->loadAllMemos();
  ASSERT_TRUE(isLoaded());
  Memo memo = listed("昨天的");
  memo.body = "改过的";
  model->updateMemo(memo);
  ASSERT_TRUE(isSettled());
  EXPECT_EQ(onDisk(yesterday, 1).body, "改过的");
  EXPECT_FALSE(fs::exists(context.paths.dayFolder(today)));
}

TEST_F(DayViewModelWritingTest, TranscriptsDoNotMakeEveryUpdateAConflict) {
  AudioTranscript transcript{.text = "话", .segments = {{.text = "话"}}};
  const Memo memo = store.createMemo(
      today,
      {.body = "口述", .attachments = {"a.m4a"}, .audioTranscripts = {{"a.m4a", transcript}}});
  loadToday();
  model->togglePinned(listed("口述"));
  ASSERT_TRUE(isSettled());
  EXPECT_EQ(failure(), "");
  EXPECT_TRUE(onDisk(today, 1).pinned);
  changeElsewhere(onDisk(today, 1), "别处写的");
  model->togglePinned(listed("口述"));
  ASSERT_TRUE(isSettled());
  EXPECT_EQ(failure(),
            "更新笔记失败：" + std::string(WriteError(WriteError::Kind::conflict).what()));
}

TEST_F(DayViewModelWritingTest, SaveForAnEditorReportsToIt) {
  const Memo memo = add(today, "读到的");
  loadToday();
  const Memo original = listed("读到的");
  Memo mine = original;
  mine.body = "改好的";
  std::optional<std::exception_ptr> ended;
  const auto save = [&] {
    ended.reset();
    model->saveMemoAsync(mine, today, original, [&](std::exception_ptr failed) { ended = failed; });
  };
  const auto kind = [&] {
    return kindOf<WriteError>([&] {
      if (*ended) std::rethrow_exception(*ended);
    });
  };
  save();
  EXPECT_THAT(shown(), ElementsAre("读到的"));
  ASSERT_TRUE(comesTrue([&] { return ended.has_value(); }));
  EXPECT_EQ(kind(), std::nullopt);
  EXPECT_THAT(shown(), ElementsAre("改好的"));

  save();  // `original` is no longer what is there
  ASSERT_TRUE(comesTrue([&] { return ended.has_value(); }));
  EXPECT_EQ(kind(), WriteError::Kind::conflict);
  EXPECT_EQ(failure(), WriteError(WriteError::Kind::conflict).what());
  EXPECT_EQ(model->lastError.get(), std::nullopt);
}

TEST_F(DayViewModelWritingTest, SaveThatARestoreOvertookHasFailed) {
  add(today, "旧");
  loadToday();
  const Memo original = listed("旧");
  Memo mine = original;
  mine.body = "新";
  std::optional<std::exception_ptr> ended;
  model->saveMemoAsync(mine, today, original, [&](std::exception_ptr failed) { ended = failed; });
  // The write goes through while this thread, the loop's own, looks at the file.
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (onDisk(today, 1).body != "新" && std::chrono::steady_clock::now() < deadline)
    std::this_thread::yield();
  store.writes().freeze();
  ASSERT_TRUE(comesTrue([&] { return ended.has_value(); }));
  EXPECT_EQ(kindOf<WriteError>([&] { std::rethrow_exception(*ended); }),
            WriteError::Kind::maintenance);
  EXPECT_THAT(shown(), ElementsAre("旧"));
  EXPECT_EQ(failure(), WriteError(WriteError::Kind::maintenance).what());
}

TEST_F(DayViewModelWritingTest, CompleteMemoTakesItsFilesFromWhereTheyLie) {
  writeFile(context.paths.dayFolder(yesterday) / "a.m4a", "sound");
  std::optional<Memo> created;
  std::exception_ptr failed;
  bool ended = false;
  const auto create = [&](std::vector<std::string> attachments) {
    ended = false;
    model->createCompleteMemo({.body = "口述",
                               .tags = {"会议"},
                               .attachments = std::move(attachments),
                               .originalNames = {{"a.m4a", "录音.m4a"}},
                               .date = today,
                               .sourceDates = {{"a.m4a", yesterday}},
                               .fallbackDate = today},
                              [&](std::optional<Memo> memo, std::exception_ptr failure) {
                                created = std::move(memo);
                                failed = failure;
                                ended = true;
                              });
    EXPECT_TRUE(comesTrue([&] { return ended; }));
  };
  create({"a.m4a"});
  ASSERT_TRUE(created);
  EXPECT_EQ(created->source, "nomely");
  EXPECT_EQ(readFile(context.paths.dayFolder(today) / "a.m4a"), "sound");
  EXPECT_EQ(store.memoStore().read(today, 1), created);
  EXPECT_EQ(index.search("口述", 50).size(), 1U);

  create({"nowhere.m4a"});
  EXPECT_FALSE(created);
  EXPECT_TRUE(failed);
  EXPECT_EQ(model->saveState.get(), SaveState());
  EXPECT_EQ(store.listMemos(today).size(), 1U);
}

TEST_F(DayViewModelWritingTest, MoveLeavesTheListsOfTheOldDay) {
  add(yesterday, "那天的");
  add(today, "要搬的");
  add(today, "留下的");
  loadToday();
  model->moveMemo(listed("要搬的"), today, yesterday);
  ASSERT_TRUE(isSettled());
  EXPECT_TRUE(isSaved());
  EXPECT_THAT(shown(), ElementsAre("留下的"));
  EXPECT_THAT(ofTheDay(), ElementsAre("留下的"));
  EXPECT_EQ(onDisk(yesterday, 2).body, "要搬的");
  EXPECT_EQ(index.search("要搬的", 50).at(0).date, yesterday);

  model->moveMemo(onDisk(yesterday, 1), yesterday, today);
  ASSERT_TRUE(isSettled());
  EXPECT_THAT(ofTheDay(), ElementsAre("留下的", "那天的"));

  const std::string before = treeOf(folder.path());
  model->moveMemo(listed("留下的"), today, today);
  EXPECT_EQ(model->saveState.get(), SaveState::saving());
  ASSERT_TRUE(isSettled());
  EXPECT_TRUE(isSaved());
  EXPECT_EQ(treeOf(folder.path()), before);
  EXPECT_THAT(shown(), ElementsAre("留下的"));

  Memo stale = listed("留下的");
  stale.body = "没见过的";
  model->moveMemo(stale, today, yesterday);
  ASSERT_TRUE(isSettled());
  EXPECT_THAT(failure(), StartsWith("修改日期失败："));
  EXPECT_EQ(model->lastError.get(), failure());
  EXPECT_THAT(shown(), ElementsAre("留下的"));
}

TEST_F(DayViewModelWritingTest, FileJoinsTheMemoAsItIsByThen) {
  writeFile(folder.path() / "elsewhere" / "图.png", "png");
  add(today, "正文");
  loadToday();
  int saves = 0;
  model->onSavedSuccessfully = [&] { ++saves; };
  Memo memo = listed("正文");
  model->importAttachmentToMemo(folder.path() / "elsewhere" / "图.png", memo);
  memo.body = "改了";
  model->updateMemo(memo);
  ASSERT_TRUE(comesTrue([&] { return saves == 2; }));
  const Memo saved = onDisk(today, 1);
  EXPECT_EQ(saved.body, "改了");
  ASSERT_EQ(saved.attachments.size(), 1U);
  EXPECT_EQ(saved.originalNames.at(saved.attachments[0]), "图.png");
  EXPECT_EQ(readFile(context.paths.dayFolder(today) / saved.attachments[0]), "png");

  const SaveState before = model->saveState.get();
  bool ended = false;
  model->importAttachment(folder.path() / "none.png", {}, [&](const auto& imported) {
    EXPECT_FALSE(imported);
    ended = true;
  });
  ASSERT_TRUE(comesTrue([&] { return ended; }));
  EXPECT_THAT(model->lastError.get().value_or(""), StartsWith("导入附件失败："));
  EXPECT_EQ(model->saveState.get(), before);
}

TEST_F(DayViewModelWritingTest, WriteOutlivesTheModel) {
  add(today, "旧");
  loadToday();
  Memo memo = listed("旧");
  memo.body = "新";
  model->updateMemo(memo);
  model->loadAllMemos();
  model.reset();
  EXPECT_EQ(onDisk(today, 1).body, "新");
  bool drained = false;
  loop.post([&] { drained = true; });
  EXPECT_TRUE(comesTrue([&] { return drained; }));
}

}  // namespace
}  // namespace nomely::test
