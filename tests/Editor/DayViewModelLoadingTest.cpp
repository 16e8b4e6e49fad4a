#include "Editor/DayViewModelFixture.h"
#include "Platform/Concurrency/NotificationCenter.h"

namespace nomely::test {
namespace {

using Cause = DayViewModel::Cause;

class DayViewModelLoadingTest : public DayViewModelTest {};

TEST_F(DayViewModelLoadingTest, AllMemosCountsInFifties) {
  for (int i = 0; i < 120; ++i) add(i % 2 == 0 ? today : yesterday, std::to_string(i));
  for (const auto& [load, count, hasMore] :
       {std::tuple(&DayViewModel::loadMoreDisplayMemos, 0, false),
        {&DayViewModel::loadAllMemos, 50, true},
        {&DayViewModel::loadMoreDisplayMemos, 100, true},
        {&DayViewModel::loadAllDisplayMemos, 120, false},
        {&DayViewModel::loadAllMemos, 50, true}}) {
    (*model.*load)();
    ASSERT_TRUE(isLoaded());
    EXPECT_EQ(shown().size(), count);
    EXPECT_EQ(model->canLoadMoreDisplayMemos(), hasMore) << count;
  }
  loadToday();
  EXPECT_EQ(shown().size(), 60U);
}

// A load is held in the middle of its query while others come; whatever order they end in, the last
// one asked for is what is shown, and it alone says when loading ends.
TEST_F(DayViewModelLoadingTest, OvertakenLoadNeverLands) {
  add(today, "今天");
  add(yesterday, "昨天");
  (void)index.allMemoEntries();
  int ends = 0;
  const Subscription watch =
      model->isLoadingTimeline.observe([&](bool value) { ends += value ? 0 : 1; });
  const auto shows = [&](const std::function<void()>& last) {
    Hold hold(*this, yesterday);
    model->loadDay(yesterday);
    EXPECT_TRUE(hold.begins());
    EXPECT_EQ(model->hasLoadedInitialTimeline.get(), ends > 0);
    last();
    EXPECT_TRUE(isLoaded());
    hold.release();
    drain();
    return shown();
  };
  EXPECT_THAT(shows([&] { model->loadDay(today); }), ElementsAre("今天"));
  EXPECT_THAT(shows([&] { model->loadAllMemos(); }), ElementsAre("今天", "昨天"));
  EXPECT_THAT(shows([&] { model->loadMemosNoTag(); }), ElementsAre("今天", "昨天"));
  EXPECT_EQ(ends, 3);

  Hold hold(*this, today);
  model->loadDay(yesterday);
  model->loadDay(today);
  ASSERT_TRUE(hold.begins());
  EXPECT_TRUE(model->isLoadingTimeline.get());
  hold.release();
  ASSERT_TRUE(isLoaded());
  EXPECT_EQ(ends, 4);
  EXPECT_THAT(shown(), ElementsAre("今天"));
}

// First the query ends before the edit, and its answer comes after it.
TEST_F(DayViewModelLoadingTest, LoadShowsTheEditsBegunBeforeItEnds) {
  add(today, "旧");
  loadToday();
  std::promise<void> begun;
  files.at(PausingFileSystem::Call::list, context.paths.dayFolder(today),
           [&] { begun.set_value(); });
  model->loadDay(today);
  begun.get_future().wait();
  endJobs();
  model->updateMemo(edited("旧", "新"));
  Subscription watch =
      model->displayMemos.observe([&](const auto&) { EXPECT_THAT(shown(), ElementsAre("新")); });
  ASSERT_TRUE(isLoaded());
  EXPECT_THAT(ofTheDay(), ElementsAre("新"));

  watch = {};
  model->updateMemo(edited("新", "更新"));
  model->loadMemosNoTag();
  ASSERT_TRUE(isLoaded());
  EXPECT_THAT(shown(), ElementsAre("更新"));
}

TEST_F(DayViewModelLoadingTest, PropertiesAreSetInTheOrderOfTheLoad) {
  std::string events;
  const auto noting = [&](const char* name) {
    return [&events, name](const auto&) { events += name; };
  };
  const Subscription watches[] = {
      model->activeSearchQuery.observe(noting("query ")),
      model->searchResultCount.observe(noting("count ")),
      model->searchSnippets.observe(noting("snippets ")),
      model->timelineMode.observe(noting("mode ")),
      model->currentFilterTag.observe(noting("tag ")),
      model->selectedDate.observe(noting("date ")),
      model->isLoadingTimeline.observe(noting("loading ")),
      model->allMemos.observe(noting("all ")),
      model->displayMemos.observe(noting("shown ")),
      NotificationCenter::shared().observe(Notifications::stopAudioPlayback, noting("stop "))};
  const auto expectEvents = [&](const std::function<void()>& load, const char* expected) {
    events.clear();
    load();
    EXPECT_EQ(events, expected);
  };
  expectEvents([&] { model->loadDay(today); }, "stop query count snippets mode tag date loading ");
  expectEvents([&] { model->loadAllMemos(); }, "stop query count snippets mode tag loading ");
  expectEvents([&] { model->loadMemosWithTag("x"); },
               "loading stop query count snippets mode tag all shown ");
  expectEvents([&] { model->loadSearchResults({}, "x"); },
               "loading stop query count snippets tag mode query count snippets ");
  expectEvents([&] { model->refreshCurrentTimeline(Cause::externalWrite); }, "loading ");
  expectEvents([&] { model->loadPinnedMemos(); },
               "stop query count snippets tag mode loading all shown ");
}

TEST_F(DayViewModelLoadingTest, FiltersShowWhatTheirQueriesFind) {
  Memo audio = store.createMemo(yesterday, {.body = "录音", .attachments = {"a.M4A"}});
  Memo image = store.createMemo(yesterday, {.body = "照片", .attachments = {"b.jpg"}});
  Memo paper = store.createMemo(yesterday, {.body = "合同", .attachments = {"c.pdf"}});
  add(today, "见 https://example.org/", {"网"});
  Memo pinned = add(Day::parse("2025-03-01").value(), "去年", {"网/旧"});
  pinned.pinned = true;
  store.updateMemo(pinned, Day::parse("2025-03-01").value(), {});
  index.invalidateCache();

  using Bodies = std::vector<std::string>;
  const auto finds = [&](const std::function<void()>& load, const Bodies& bodies) {
    load();
    EXPECT_THAT(shown(), IsEmpty());
    EXPECT_TRUE(isLoaded());
    EXPECT_EQ(shown(), bodies);
  };
  finds([&] { model->loadMemosWithTag("网"); }, {"去年", "见 https://example.org/"});
  EXPECT_EQ(model->currentFilterTag.get(), "网");
  finds([&] { model->loadPinnedMemos(); }, {"去年"});
  EXPECT_EQ(model->timelineMode.get(), TimelineMode::pinned);
  for (const auto& [load, bodies] :
       {std::pair(&DayViewModel::loadMemosNoTag, Bodies{"合同", "照片", "录音"}),
        {&DayViewModel::loadMemosWithImages, {"照片"}},
        {&DayViewModel::loadMemosWithLinks, {"见 https://example.org/"}},
        {&DayViewModel::loadMemosWithAttachments, {"合同"}},
        {&DayViewModel::loadMemosWithAudio, {"录音"}},
        {&DayViewModel::loadOnThisDay, {"去年"}}})
    finds([&, load = load] { (*model.*load)(); }, bodies);
  EXPECT_EQ(model->timelineMode.get(), TimelineMode::filtered);
  EXPECT_EQ(model->currentFilterTag.get(), std::nullopt);
  model->refreshOnThisDayFlag();
  EXPECT_TRUE(comesTrue([&] { return model->hasOnThisDay.get(); }));
}

TEST_F(DayViewModelLoadingTest, SearchKeepsTheOrderOfItsResults) {
  add(yesterday, "苹果派");
  const Memo gone = add(today, "苹果树");
  add(today, "苹果酱");
  const auto results = index.search("苹果", 50);
  store.deleteMemo(today, gone);
  model->loadSearchResults(results, "苹果");
  ASSERT_TRUE(isLoaded());
  EXPECT_THAT(shown(), ElementsAre("苹果酱", "苹果派"));
  EXPECT_EQ(model->searchResultCount.get(), 3U);
  EXPECT_EQ(model->activeSearchQuery.get(), "苹果");
  EXPECT_EQ(model->searchSnippet(yesterday, 1), results[2].snippet);
  EXPECT_EQ(model->searchSnippet(yesterday, 2), std::nullopt);
  model->loadDay(today);
  EXPECT_EQ(model->activeSearchQuery.get(), std::nullopt);
  EXPECT_EQ(model->searchResultCount.get(), 0U);
  EXPECT_EQ(model->searchSnippet(yesterday, 1), std::nullopt);
}

// Each filter runs again for a write from outside, and stands still for the model's own.
TEST_F(DayViewModelLoadingTest, OnlyAnExternalWriteRunsAFilterAgain) {
  add(today, "苹果 #果", {"果"});
  for (const std::function<void()>& load :
       {std::function<void()>([&] { model->loadSearchResults(index.search("苹果", 50), "苹果"); }),
        {[&] { model->loadMemosWithTag("果"); }},
        {[&] { model->loadMemosWithLinks(); }}}) {
    load();
    ASSERT_TRUE(isLoaded());
    const std::size_t before = shown().size();
    add(today, "苹果 https://example.org/", {"果"});
    model->refreshCurrentTimeline(Cause::ownWrite);
    EXPECT_FALSE(model->isLoadingTimeline.get());
    model->refreshCurrentTimeline(Cause::externalWrite);
    ASSERT_TRUE(comesTrue([&] { return shown().size() == before + 1; }));
    ASSERT_TRUE(isLoaded());
  }
}

}  // namespace
}  // namespace nomely::test
