#include <thread>

#include "Core/Storage/VersionStore.h"
#include "Core/Storage/WriteError.h"
#include "Editor/DayViewModelFixture.h"
#include "Support/ErrorKind.h"

namespace nomely::test {
namespace {

class DayViewModelWritingTest : public DayViewModelTest {
 protected:
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
  model->updateMemo(edited("旧文", "新文"));
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
  model->updateMemo(edited("读到的", "我写的"));
  EXPECT_THAT(shown(), ElementsAre("我写的"));
  ASSERT_TRUE(isSettled());
  EXPECT_THAT(shown(), ElementsAre("别处写的"));
  EXPECT_THAT(ofTheDay(), ElementsAre("别处写的"));
  EXPECT_THAT(failure(), StartsWith("更新笔记失败："));
  EXPECT_EQ(model->lastError.get(), failure());
  EXPECT_EQ(onDisk(today, 1).body, "别处写的");

  // An edit that came later stays until its own write has failed.
  std::vector<std::vector<std::string>> atFailure;
  const Subscription watch =
      model->lastError.observe([&](const auto&) { atFailure.push_back(shown()); });
  Memo mine = listed("别处写的");
  changeElsewhere(mine, "又在别处写的");
  for (const char* body : {"第一次", "第二次"}) {
    mine.body = body;
    model->updateMemo(mine);
  }
  ASSERT_TRUE(comesTrue([&] { return atFailure.size() == 2; }));
  EXPECT_THAT(atFailure[0], ElementsAre("第二次"));
  EXPECT_THAT(atFailure[1], ElementsAre("又在别处写的"));

  store.deleteMemo(today, listed("又在别处写的"));
  model->updateMemo(edited("又在别处写的", "我又写的"));
  ASSERT_TRUE(isSettled());
  EXPECT_THAT(failure(), StartsWith("更新笔记失败："));
  EXPECT_THAT(shown(), IsEmpty());
  EXPECT_THAT(ofTheDay(), IsEmpty());
}

// A card may hold an older text than the list, or one that no list has any more. Transcript
// segments make every two readings of a memo unequal, which is no conflict.
TEST_F(DayViewModelWritingTest, PinAndLockNeverBringAnOldTextBack) {
  const AudioTranscript transcript{.text = "话", .segments = {{.text = "话"}}};
  (void)store.createMemo(
      today,
      {.body = "旧文", .attachments = {"a.m4a"}, .audioTranscripts = {{"a.m4a", transcript}}});
  loadToday();
  const Memo card = listed("旧文");
  model->updateMemo(edited("旧文", "新文"));
  clock.advance(std::chrono::hours(1));
  model->toggleLockedOnTop(card);
  ASSERT_TRUE(comesTrue([&] { return onDisk(today, 1).lockedOnTop && onDisk(today, 1).pinned; }));
  model->togglePinned(card);
  ASSERT_TRUE(comesTrue([&] { return !onDisk(today, 1).lockedOnTop && !onDisk(today, 1).pinned; }));
  ASSERT_TRUE(isSettled());
  EXPECT_EQ(failure(), "");
  EXPECT_EQ(onDisk(today, 1).body, "新文");
  EXPECT_EQ(onDisk(today, 1).updatedAt, DateFormatters::timestamp(clock.now()));
  EXPECT_THAT(shown(), ElementsAre("新文"));

  model->loadDay(yesterday);
  ASSERT_TRUE(isLoaded());
  model->togglePinned(card, today);
  ASSERT_TRUE(isSettled());
  EXPECT_EQ(failure(),
            "更新笔记失败：" + std::string(WriteError(WriteError::Kind::conflict).what()));
  EXPECT_EQ(onDisk(today, 1).body, "新文");
}

TEST_F(DayViewModelWritingTest, MemoThatNoLongerBelongsLeavesUnlessItsChangeFails) {
  Memo memo = store.createMemo(today, {.body = "录音", .attachments = {"a.m4a"}});
  memo.pinned = true;
  store.updateMemo(memo, today, {});
  const std::tuple<const char*, void (DayViewModel::*)(), void (*)(Memo&)> cases[] = {
      {"pinned", &DayViewModel::loadPinnedMemos, [](Memo& mine) { mine.pinned = false; }},
      {"filter", &DayViewModel::loadMemosWithAudio, [](Memo& mine) { mine.attachments.clear(); }},
  };
  for (const auto& [name, load, change] : cases) {
    SCOPED_TRACE(name);
    (*model.*load)();
    ASSERT_TRUE(isLoaded());
    for (const bool fails : {true, false}) {
      ASSERT_EQ(shown().size(), 1U);
      Memo mine = *model->displayMemos.get()[0].memo;
      if (fails) changeElsewhere(mine, std::string("别处写的") + name);
      change(mine);
      model->updateMemo(mine);
      EXPECT_THAT(shown(), IsEmpty());
      ASSERT_TRUE(isSettled());
      EXPECT_EQ(failure().starts_with("更新笔记失败："), fails);
    }
    EXPECT_THAT(shown(), IsEmpty());
  }
}

// Another program wrote the note without an identity. It gets one with the first change, and a
// second change made before the lists know goes on from there.
TEST_F(DayViewModelWritingTest, ListsTakeOverWhatWasStored) {
  writeFile(context.paths.memoFile(today, 1), "---\ntime: '08:00'\n---\n\n旧\n");
  loadToday();
  Memo mine = *model->allMemos.get().at(0).memo;
  for (const char* body : {"\n\n一", "\n二"}) {
    mine.body = body;
    model->updateMemo(mine);
  }
  // The first of the two writes settles before the second.
  ASSERT_TRUE(comesTrue([&] {
    const Memo stored = onDisk(today, 1);
    return stored.body == "二" && *model->allMemos.get().at(0).memo == stored;
  }));
  EXPECT_EQ(failure(), "");
  EXPECT_TRUE(onDisk(today, 1).memoId);
  EXPECT_THAT(model->memos.get(), ElementsAre(onDisk(today, 1)));
  EXPECT_EQ(VersionStore(context).listVersions(today, 1, {}).size(), 2U);

  using Act = std::function<void(const Memo&)>;
  for (const Act& act : {Act([&](const Memo& card) { model->deleteMemo(card); }),
                         Act([&](const Memo& card) { model->moveMemo(card, today, yesterday); })}) {
    writeFile(context.paths.memoFile(today, 2), "---\ntime: '08:00'\n---\n\n别的\n");
    index.invalidateCache();
    renew();
    loadToday();
    model->updateMemo(edited("别的\n", "\n改过"));
    act(listed("\n改过"));
    ASSERT_TRUE(comesTrue([&] { return !fs::exists(context.paths.memoFile(today, 2)); }));
    ASSERT_TRUE(isSettled());
    EXPECT_EQ(failure(), "");
  }
}

// The pass at the start upgrades notes of other programs while the first list already shows them.
TEST_F(DayViewModelWritingTest, AnUpgradeMeanwhileIsNoConflict) {
  const std::function<void(const Memo&)> acts[] = {
      [&](const Memo& card) { model->togglePinned(card); },
      [&](const Memo& card) { model->toggleLockedOnTop(card); },
      [&](const Memo&) { model->updateMemo(edited("旧", "新")); },
      [&](const Memo& card) { model->moveMemo(card, today, yesterday); },
      [&](const Memo& card) { model->deleteMemo(card); }};
  const auto file = context.paths.memoFile(today, 1);
  for (const std::string body : {"旧", "别处改的"}) {
    for (const auto& act : acts) {
      writeFile(file, "---\ntime: '08:00'\n---\n\n旧");
      index.invalidateCache();
      renew();
      model->loadDay(today);
      ASSERT_TRUE(comesTrue([&] { return shown() == std::vector<std::string>{"旧"}; }));
      const Memo card = listed("旧");
      Memo upgraded = card;
      upgraded.memoId = "memo_1";
      upgraded.createdAt = upgraded.updatedAt = "2026-03-01T08:00:00+08:00";
      upgraded.schemaVersion = MemoFrontmatter::currentSchemaVersion;
      service.upgrade(today, card, upgraded);
      if (body != "旧") changeElsewhere(upgraded, body);
      const auto before = context.files.read(file);
      act(card);
      bool areDone = false;
      model->afterWrites([&] { areDone = true; });
      ASSERT_TRUE(comesTrue([&] { return areDone && !model->isPerformingTrashOperation.get(); }));
      ASSERT_TRUE(isSettled());
      EXPECT_EQ(context.files.read(file) == before, body != "旧") << "never written over";
      EXPECT_TRUE(!fs::exists(file) || onDisk(today, 1).memoId == "memo_1");
      fs::remove(file);
    }
  }
}

// A list without dates of its own still finds the memo's day by its identity.
TEST_F(DayViewModelWritingTest, DateOfAnUpdateIsTheMemosOwn) {
  add(yesterday, "昨天的");
  model->loadAllMemos();
  ASSERT_TRUE(isLoaded());
  model->updateMemo(edited("昨天的", "改过的"));
  ASSERT_TRUE(isSettled());
  EXPECT_EQ(onDisk(yesterday, 1).body, "改过的");
  EXPECT_FALSE(fs::exists(context.paths.dayFolder(today)));
}

TEST_F(DayViewModelWritingTest, SaveForAnEditorReportsToIt) {
  add(today, "读到的");
  loadToday();
  const Memo original = listed("读到的");
  std::optional<std::exception_ptr> ended;
  const auto save = [&](const Memo& expected, const std::string& body) {
    Memo mine = expected;
    mine.body = body;
    ended.reset();
    model->saveMemoAsync(mine, today, expected,
                         [&](auto, std::exception_ptr failed) { ended = failed; });
  };
  const auto outcome = [&] {
    EXPECT_TRUE(comesTrue([&] { return ended.has_value(); }));
    return kindOf<WriteError>([&] {
      if (*ended) std::rethrow_exception(*ended);
    });
  };
  save(original, "改好的");
  EXPECT_THAT(shown(), ElementsAre("读到的"));
  EXPECT_EQ(outcome(), std::nullopt);
  EXPECT_THAT(shown(), ElementsAre("改好的"));

  save(original, "改好的");  // `original` is no longer what is there
  EXPECT_EQ(outcome(), WriteError::Kind::conflict);
  EXPECT_EQ(failure(), WriteError(WriteError::Kind::conflict).what());
  EXPECT_EQ(model->lastError.get(), std::nullopt);

  // A restore overtakes the end of a save: the write goes through while this thread, the loop's
  // own, looks at the file.
  save(listed("改好的"), "新");
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (onDisk(today, 1).body != "新" && std::chrono::steady_clock::now() < deadline)
    std::this_thread::yield();
  store.writes().freeze();
  EXPECT_EQ(outcome(), WriteError::Kind::maintenance);
  EXPECT_THAT(shown(), ElementsAre("改好的"));
  EXPECT_EQ(failure(), WriteError(WriteError::Kind::maintenance).what());
}

TEST_F(DayViewModelWritingTest, CompleteMemoTakesItsFilesFromWhereTheyLie) {
  writeFile(context.paths.dayFolder(yesterday) / "a.m4a", "sound");
  const auto create = [&](const std::string& attachment) {
    std::optional<std::pair<std::optional<Memo>, std::exception_ptr>> ended;
    model->createCompleteMemo({.body = "口述",
                               .attachments = {attachment},
                               .date = today,
                               .sourceDates = {{attachment, yesterday}},
                               .fallbackDate = today},
                              [&](std::optional<Memo> memo, std::exception_ptr failure) {
                                ended = {std::move(memo), failure};
                              });
    EXPECT_TRUE(comesTrue([&] { return ended.has_value(); }));
    return ended.value();
  };
  const auto created = create("a.m4a").first;
  ASSERT_TRUE(created);
  EXPECT_EQ(created->source, "nomely");
  EXPECT_EQ(store.memoStore().read(today, 1), created);
  EXPECT_EQ(index.search("口述", 50).size(), 1U);

  EXPECT_TRUE(create("nowhere.m4a").second);
  EXPECT_EQ(model->saveState.get(), SaveState());
  EXPECT_EQ(store.listMemos(today).size(), 1U);
}

TEST_F(DayViewModelWritingTest, MoveLeavesTheListsOfTheOldDay) {
  for (const char* body : {"要搬的", "留下的"}) add(today, body);
  loadToday();
  model->moveMemo(listed("要搬的"), today, yesterday);
  ASSERT_TRUE(isSettled());
  EXPECT_TRUE(isSaved());
  EXPECT_THAT(shown(), ElementsAre("留下的"));
  EXPECT_EQ(index.search("要搬的", 50).at(0).date, yesterday);
  model->moveMemo(onDisk(yesterday, 1), yesterday, today);
  ASSERT_TRUE(isSettled());
  EXPECT_THAT(ofTheDay(), ElementsAre("留下的", "要搬的"));

  const std::string before = treeOf(folder.path());
  model->moveMemo(listed("留下的"), today, today);
  EXPECT_EQ(model->saveState.get(), SaveState::saving());
  ASSERT_TRUE(isSettled());
  EXPECT_TRUE(isSaved());
  EXPECT_EQ(treeOf(folder.path()), before);

  model->moveMemo(edited("留下的", "没见过的"), today, yesterday);
  ASSERT_TRUE(isSettled());
  EXPECT_THAT(failure(), StartsWith("修改日期失败："));
  EXPECT_EQ(model->lastError.get(), failure());
  EXPECT_THAT(shown(), ElementsAre("留下的"));
}

TEST_F(DayViewModelWritingTest, FileJoinsTheMemoAsItIsByThen) {
  writeFile(folder.path() / "图.png", "png");
  add(today, "正文");
  loadToday();
  int saves = 0;
  model->onSavedSuccessfully = [&] { ++saves; };
  model->importAttachmentToMemo(folder.path() / "图.png", listed("正文"));
  model->updateMemo(edited("正文", "改了"));
  ASSERT_TRUE(comesTrue([&] { return saves == 2; }));
  const Memo saved = onDisk(today, 1);
  EXPECT_EQ(saved.body, "改了");
  ASSERT_EQ(saved.attachments.size(), 1U);
  EXPECT_EQ(saved.originalNames.at(saved.attachments[0]), "图.png");

  const SaveState before = model->saveState.get();
  std::optional<bool> isImported;
  model->importAttachment(folder.path() / "none.png", {},
                          [&](const auto& imported) { isImported = imported.has_value(); });
  ASSERT_TRUE(comesTrue([&] { return isImported == false; }));
  EXPECT_THAT(model->lastError.get().value_or(""), StartsWith("导入附件失败："));
  EXPECT_EQ(model->saveState.get(), before);
}

TEST_F(DayViewModelWritingTest, WriteOutlivesTheModel) {
  add(today, "旧");
  loadToday();
  model->updateMemo(edited("旧", "新"));
  model->loadAllMemos();
  model.reset();
  EXPECT_EQ(onDisk(today, 1).body, "新");
  drain();
}

}  // namespace
}  // namespace nomely::test
