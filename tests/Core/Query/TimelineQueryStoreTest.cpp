#include <gmock/gmock.h>

#include "Core/Query/EntryDateIndex.h"
#include "Core/Query/TimelineQueryStore.h"
#include "Platform/Concurrency/RunLoop.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

using testing::ElementsAre;

class TimelineQueryStoreTest : public StoreTest {
 protected:
  JobPool jobs{2};
  SearchIndex index{context, jobs};
};

TEST_F(TimelineQueryStoreTest, EachListWithAndWithoutAnIndex) {
  const TimelineQueryStore fromFiles(store);
  const TimelineQueryStore fromIndex(store, &index);
  EXPECT_THAT(fromFiles.visibleEntries(), testing::IsEmpty());
  const struct {
    const char* date;
    DayStore::NewMemo content;
    bool pinned = false;
  } memos[] = {
      {"2019-03-05", {.body = "plan", .tags = {"工作/计划"}}},
      {"2024-02-29", {.body = "room", .tags = {"工作室"}}},
      {"2025-03-05", {.body = "hidden", .tags = {"_flomo_import"}}},
      {"2026-03-05", {.body = "link https://a.b", .tags = {"工作"}, .time = "08:00"}},
      {"2026-03-05", {.body = "LINK HTTP://a.b", .time = "07:00"}},
      {"2026-03-05", {.body = "\u3000", .attachments = {"x.JPG"}, .time = "07:00"}},
      {"2026-03-05", {.body = " \n", .tags = {"工作"}}},
      {"2026-03-06", {.body = "both", .attachments = {"x.pdf", "y.png"}}},
      {"2026-03-06", {.body = "caf", .attachments = {"x.caf"}}},
      {"2026-03-07", {.body = "trip", .tags = {"备忘录/旅行"}}, true},
      {"2026-03-08", {.body = "small", .attachments = {"a.mp3", "gone.mp3"}}},
      {"2026-03-08", {.body = "large", .attachments = {"a.mp3", "b.M4A", "big.png"}}},
      {"2026-03-09", {.body = "small later", .attachments = {"a.ogg"}}},
      {"2027-03-05", {.body = "later"}},
  };
  for (const auto& [date, content, pinned] : memos) {
    Memo memo = store.createMemo(day(date), content);
    memo.pinned = pinned;
    if (pinned) store.updateMemo(memo, day(date), {});
    for (const std::string& name : memo.attachments)
      if (name != "gone.mp3") writeFile(context.paths.dayFolder(day(date)) / name, "sound");
  }
  writeFile(context.paths.dayFolder(day("2026-03-08")) / "big.png", std::string(100, ' '));
  const auto bodiesOf = [](const TimelineQueryStore::Entries& entries) {
    std::vector<std::string> bodies;
    for (const MemoEntry& entry : entries) bodies.push_back(entry.memo->body);
    return bodies;
  };
  for (const TimelineQueryStore* lists : {&fromFiles, &fromIndex}) {
    SCOPED_TRACE(lists == &fromIndex ? "index" : "files");
    EXPECT_THAT(bodiesOf(lists->visibleEntries()),
                ElementsAre("later", "small later", "large", "small", "caf", "both",
                            "link https://a.b", "", "LINK HTTP://a.b", "hidden", "room", "plan"));
    EXPECT_THAT(bodiesOf(lists->entriesWithTag("工作")), ElementsAre("link https://a.b", "plan"));
    EXPECT_THAT(bodiesOf(lists->entriesWithTag("备忘录")), ElementsAre("trip"));
    EXPECT_THAT(bodiesOf(lists->entriesWithoutTags()),
                ElementsAre("later", "small later", "large", "small", "caf", "both", "",
                            "LINK HTTP://a.b"));
    EXPECT_THAT(bodiesOf(lists->entriesWithImages()), ElementsAre("large", "both", ""));
    EXPECT_THAT(bodiesOf(lists->entriesWithLinks()), ElementsAre("link https://a.b"));
    EXPECT_THAT(bodiesOf(lists->entriesWithAudioSortedBySize()),
                ElementsAre("large", "small later", "small"));
    EXPECT_THAT(bodiesOf(lists->entriesWithAttachments()), ElementsAre("caf", "both"));
    EXPECT_THAT(bodiesOf(lists->pinnedEntries()), ElementsAre("trip"));
    EXPECT_THAT(bodiesOf(lists->onThisDayEntries(day("2026-03-05"))),
                ElementsAre("hidden", "plan"));
    EXPECT_THAT(bodiesOf(lists->onThisDayEntries(day("2028-02-29"))), ElementsAre("room"));
  }
}

TEST_F(TimelineQueryStoreTest, DaysThatCanNotBeReadOrComeTooLateAreEmpty) {
  (void)store.createMemo(day("2026-03-05"), {.body = "a"});
  writeFile(context.paths.dayFolder(day("2026-03-06")), "no folder");
  EXPECT_EQ(TimelineQueryStore(store).visibleEntries().size(), 1U);
  EXPECT_EQ(TimelineQueryStore(store, &index).visibleEntries().size(), 1U);
  EXPECT_TRUE(TimelineQueryStore(store).visibleMemos(day("2026-03-06")).empty());
  std::stop_source stop;
  stop.request_stop();
  for (SearchIndex* attached : {static_cast<SearchIndex*>(nullptr), &index})
    EXPECT_TRUE(
        TimelineQueryStore(store, attached).until(stop.get_token()).visibleEntries().empty());
}

TEST_F(TimelineQueryStoreTest, DatesArriveOnTheMainExecutor) {
  RunLoop loop;
  (void)store.createMemo(day("2026-03-05"), {.body = "a"});
  {
    EntryDateIndex brief(store, jobs, loop);
    brief.refresh();
  }
  EntryDateIndex dates(store, jobs, loop);
  int told = 0;
  const Subscription subscription = dates.dates().observe([&](const auto&) {
    EXPECT_TRUE(loop.isCurrent());
    ++told;
  });
  dates.refresh();
  EXPECT_TRUE(dates.dates().get().empty());
  EXPECT_TRUE(loop.runUntil([&] { return told == 1; }, std::chrono::seconds(10)));
  EXPECT_THAT(dates.dates().get(), ElementsAre(day("2026-03-05")));
}

}  // namespace
}  // namespace nomely::test
