#include "Editor/DayViewModelFixture.h"

namespace nomely::test {
namespace {

class DayViewModelTrashTest : public DayViewModelTest {
 protected:
  void SetUp() override {
    for (const char* body : {"一", "二", "三"}) add(today, body);
    loadToday();
  }
  [[nodiscard]] testing::AssertionResult isDone() {
    return comesTrue([this] {
      return !model->isPerformingTrashOperation.get() && !model->isLoadingTimeline.get();
    });
  }
  [[nodiscard]] std::vector<std::string> inTrash() const {
    std::vector<std::string> bodies;
    for (const auto& entry : model->trashEntries.get()) bodies.push_back(entry.memo.body);
    return bodies;
  }
};

TEST_F(DayViewModelTrashTest, DeletePressedTwiceIsOneDeletion) {
  const Memo memo = listed("二");
  std::vector<bool> running;
  const Subscription watch =
      model->isPerformingTrashOperation.observe([&](bool value) { running.push_back(value); });
  model->deleteMemo(memo);
  model->deleteMemo(memo);
  model->deleteMemos({{today, memo}});
  ASSERT_TRUE(isDone());
  EXPECT_THAT(running, ElementsAre(true, false));
  EXPECT_THAT(shown(), ElementsAre("三", "一"));
  EXPECT_THAT(inTrash(), ElementsAre("二"));
  EXPECT_EQ(failure(), "");
  EXPECT_EQ(index.search("二", 50).size(), 0U);

  model->deleteMemo(memo);  // the key is free again, but the memo is gone
  ASSERT_TRUE(isDone());
  EXPECT_THAT(failure(), StartsWith("回收站操作未全部完成，已刷新实际结果："));
  EXPECT_EQ(model->lastError.get(), failure());
}

TEST_F(DayViewModelTrashTest, OfferCountsWhatReallyMoved) {
  store.updateMemo(edited("三", "别处改过"), today, {});
  model->deleteMemos({{today, listed("一")}, {today, listed("三")}, {today, listed("二")}});
  ASSERT_TRUE(isDone());
  ASSERT_TRUE(model->pendingUndoDelete.get());
  EXPECT_EQ(model->pendingUndoDelete.get()->label, "已删除 1 条");
  EXPECT_THAT(shown(), ElementsAre("别处改过", "二"));
  EXPECT_NE(failure(), "");

  const Uuid first = model->pendingUndoDelete.get()->id;
  model->deleteMemos({{today, listed("别处改过")}, {today, listed("二")}});
  ASSERT_TRUE(isDone());
  EXPECT_EQ(model->pendingUndoDelete.get()->label, "已删除 2 条");
  EXPECT_NE(model->pendingUndoDelete.get()->id, first);
  EXPECT_THAT(shown(), IsEmpty());
  EXPECT_THAT(ofTheDay(), IsEmpty());
}

TEST_F(DayViewModelTrashTest, UndoBringsBackAndTheOfferGoes) {
  int saved = 0;
  model->onSavedSuccessfully = [&] { ++saved; };
  model->deleteMemos({{today, listed("一")}, {today, listed("二")}});
  model->undoDelete();  // nothing to undo yet
  ASSERT_TRUE(isDone());
  model->undoDelete();
  EXPECT_TRUE(model->pendingUndoDelete.get());
  model->undoDelete();  // pressed twice
  ASSERT_TRUE(isDone());
  EXPECT_FALSE(model->pendingUndoDelete.get());
  EXPECT_THAT(shown(), ElementsAre("三", "二", "一"));
  EXPECT_THAT(inTrash(), IsEmpty());
  EXPECT_EQ(failure(), "");
  EXPECT_EQ(saved, 2);
  EXPECT_EQ(index.search("二", 50).size(), 1U);
}

TEST_F(DayViewModelTrashTest, PartlyFailedUndoKeepsTheOfferOfTheRest) {
  model->deleteMemos({{today, listed("一")}, {today, listed("二")}});
  ASSERT_TRUE(isDone());
  const auto second = model->pendingUndoDelete.get()->entries.at(1);
  // A folder where the memo's file should go.
  fs::create_directories(context.paths.memoFile(today, 2) / "taken");
  fs::remove_all(context.paths.trashFolder() /
                 model->pendingUndoDelete.get()->entries.at(0).trashSubdir);
  model->undoDelete();
  ASSERT_TRUE(isDone());
  ASSERT_TRUE(model->pendingUndoDelete.get());
  EXPECT_THAT(model->pendingUndoDelete.get()->entries, ElementsAre(second));
  EXPECT_EQ(model->pendingUndoDelete.get()->label, "已删除 2 条");
  EXPECT_THAT(failure(), StartsWith("回收站操作未全部完成，已刷新实际结果："));
  model->dismissUndo();
  EXPECT_FALSE(model->pendingUndoDelete.get());
}

TEST_F(DayViewModelTrashTest, OperationsRunInTheOrderOfTheCalls) {
  model->deleteMemo(listed("一"));
  model->deleteMemo(listed("二"));
  model->emptyTrash();
  model->deleteMemo(listed("三"));
  ASSERT_TRUE(comesTrue([&] { return inTrash() == std::vector<std::string>{"三"}; }));
  ASSERT_TRUE(isDone());
  EXPECT_THAT(shown(), IsEmpty());
  EXPECT_EQ(model->pendingUndoDelete.get()->label, "已删除 1 条");

  model->batchDeleteTrash({});
  model->batchRestoreTrash({});
  EXPECT_FALSE(model->isPerformingTrashOperation.get());
  model->batchDeleteTrash(model->trashEntries.get());
  ASSERT_TRUE(isDone());
  EXPECT_FALSE(model->pendingUndoDelete.get());
}

TEST_F(DayViewModelTrashTest, ListingThatAnOperationOvertookIsDropped) {
  (void)service.trashStore().trashMemo(today, listed("一"));
  model->loadTrash();
  EXPECT_TRUE(model->isLoadingTrash.get());
  model->loadTrash();
  ASSERT_TRUE(comesTrue([&] { return !model->isLoadingTrash.get(); }));
  EXPECT_THAT(inTrash(), ElementsAre("一"));

  std::vector<std::size_t> listings;
  const Subscription watch =
      model->trashEntries.observe([&](const auto& entries) { listings.push_back(entries.size()); });
  model->loadTrash();
  model->restoreFromTrash(model->trashEntries.get().at(0));
  EXPECT_FALSE(model->isLoadingTrash.get());
  ASSERT_TRUE(isDone());
  EXPECT_THAT(listings, ElementsAre(0U));
  EXPECT_THAT(shown(), ElementsAre("三", "二", "一"));
}

// A filtered list runs again when a deletion has ended; the memo must not come back with it.
TEST_F(DayViewModelTrashTest, DeletionWhileFiltered) {
  model->loadMemosNoTag();
  ASSERT_TRUE(isLoaded());
  add(today, "别处新写的");
  model->deleteMemo(listed("二"));
  ASSERT_TRUE(isDone());
  EXPECT_THAT(shown(), ElementsAre("别处新写的", "三", "一"));
}

TEST_F(DayViewModelTrashTest, UndoneImportsLeaveTheTimeline) {
  add(today, "导入的", {"_flomo_import"});
  add(today, "批次", {"_notes_import", "_notes_import_batch_1"});
  int saves = 0;
  model->onSavedSuccessfully = [&] { ++saves; };
  std::vector<std::size_t> moved;
  const auto note = [&](std::size_t count) { moved.push_back(count); };
  model->undoFlomoImport(note);
  model->undoLatestNotesImport(note);
  model->undoFlomoImport(note);
  ASSERT_TRUE(comesTrue([&] { return moved.size() == 3 && inTrash().size() == 2; }));
  ASSERT_TRUE(isLoaded());
  EXPECT_THAT(moved, ElementsAre(1U, 1U, 0U));
  EXPECT_EQ(model->timelineMode.get(), TimelineMode::all);
  EXPECT_THAT(shown(), ElementsAre("三", "二", "一"));
  EXPECT_EQ(saves, 2);
}

}  // namespace
}  // namespace nomely::test
