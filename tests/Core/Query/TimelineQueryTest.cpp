#include <array>
#include <random>
#include <thread>

#include <fmt/format.h>

#include "Core/Query/EntryDateIndex.h"
#include "Core/Query/RootScan.h"
#include "Core/Query/TimelineQueryStore.h"
#include "Platform/Cancellation.h"
#include "Platform/Concurrency/RunLoop.h"
#include "Support/RandomText.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

class TimelineQueryStoreTest : public StoreTest {
 protected:
  JobPool jobs{2};
  SearchIndex index{context, jobs};
};

TEST_F(TimelineQueryStoreTest, EachListWithAndWithoutAnIndex) {
  const TimelineQueryStore fromFiles(store);
  const TimelineQueryStore fromIndex(store, &index);
  EXPECT_THAT(fromFiles.visibleEntries(), IsEmpty());
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

using Order = RootScan::Order;

class RootScanTest : public StoreTest {
 protected:
  [[nodiscard]] std::vector<std::string> listed(RootScan& scan, const MemoFilter& filter,
                                                Order order, std::size_t most = SIZE_MAX) {
    std::vector<std::string> bodies;
    scan.forEach(filter, order, [&](const MemoEntry& entry) {
      bodies.push_back(entry.memo->body);
      return bodies.size() < most;
    });
    return bodies;
  }

  Day today = day("2026-03-05");
  Day yesterday = day("2026-03-04");
};

TEST_F(RootScanTest, ListsInBothOrdersAndTellsWhatItCanNotRead) {
  const std::tuple<Day, const char*, const char*, bool, bool> memos[] = {
      {yesterday, "d", "08:00", true, false}, {yesterday, "e", "09:00", false, false},
      {today, "c", "08:00", false, false},    {today, "b", "07:00", true, false},
      {today, "a", "06:00", true, true},      {today, " ", "10:00", false, false}};
  for (const auto& [date, body, time, pinned, locked] : memos) {
    Memo memo = store.createMemo(date, {.body = body, .time = time});
    memo.pinned = pinned;
    memo.lockedOnTop = locked;
    store.updateMemo(memo, date, {});
  }
  const fs::path damaged = context.paths.dayFolder(today) / "009.md";
  writeFile(damaged, "---\nmood: abc\n---\n");
  writeFile(context.paths.dayFolder(today) / "8.md", "no memo by its name");
  writeFile(context.paths.dayFolder(day("2026-03-06")), "no folder");
  fs::create_directory_symlink("2026-03-07", context.paths.dayFolder(day("2026-03-07")));
  RootScan scan(context);
  std::vector<fs::path> told;
  std::vector<double> shares;
  scan.onUnreadable = [&](const RootScan::Unreadable& file) { told.push_back(file.file); };
  scan.progress = [&](double share) { shares.push_back(share); };
  EXPECT_THAT(listed(scan, {}, Order::newestFirst), ElementsAre("a", "b", "c", "d", "e"));
  EXPECT_THAT(told, ElementsAre(context.paths.dayFolder(day("2026-03-07")), damaged));
  EXPECT_THAT(shares, ElementsAre(0.25, 0.5, 0.75, 1));
  EXPECT_THAT(listed(scan, {}, Order::oldestFirst), ElementsAre("e", "d", "c", "b", "a"));
  EXPECT_THAT(listed(scan, {.to = yesterday}, Order::newestFirst, 1), ElementsAre("d"));
  EXPECT_THAT(listed(scan, {.from = today, .pinned = true}, Order::newestFirst),
              ElementsAre("a", "b"));
  std::stop_source stop;
  stop.request_stop();
  RootScan stopped(context, stop.get_token());
  EXPECT_THROW((void)stopped.allTags(), CancellationError);
}

// A tag as other programs may spell it in a header's list.
std::string spelled(const std::string& tag, std::mt19937& random) {
  std::string text;
  const auto style = random() % 5;
  for (std::string_view rest = tag; !rest.empty();) {
    const auto [value, length] = decodeFirst(rest);
    const std::string_view character = rest.substr(0, length);
    rest.remove_prefix(length);
    text += style == 0                     ? fmt::format("\\U{:08x}", static_cast<unsigned>(value))
            : style == 1 && value == U'\'' ? "''"
            : style != 1 && value == U'\n' ? "\n  "
                                           : std::string(character);
  }
  static constexpr std::array<std::string_view, 5> forms{"- \"{}\"\n", "- '{}'\n", "- |-\n  {}\n",
                                                         "- >-\n  {}\n", "- {}\n"};
  return fmt::format(fmt::runtime(forms[style]), text);
}

// On few different characters, so that many words are nearly there.
TEST_F(RootScanTest, FindsWhatAnIndexFindsWithFiltersAndWithout) {
  std::mt19937 random(7);
  const auto text = [&](std::size_t longest) {
    static const auto parts = piecesOf(
        "天¦豈¦\uF900¦a¦B¦k¦\u212A¦ß¦ss¦\u017F¦İ¦é¦e¦\u0301¦Å¦\u212B¦Ａ¦👍¦가¦\u1100\u1161¦\\¦'¦\"¦"
        "''¦ ¦　¦\n¦\r¦\u0085¦#¦: ¦·¦µ¦。");
    std::string made;
    for (auto length = 1 + random() % longest; length > 0; --length)
      made += parts[random() % parts.size()];
    return made;
  };
  for (int i = 0; i < 400; ++i) {
    const fs::path day = context.paths.dayFolder(today.plusDays(static_cast<int>(random() % 40)));
    std::string tags;
    for (auto count = random() % 3; count > 0; --count) tags += spelled(text(4), random);
    writeFile(day / (random() % 16 == 0 ? "7.md" : DiskPaths::memoFileName(1 + i % 20)),
              fmt::format("---\ntime: '09:0{}'\npinned: {}\n{}{}---\n\n{}{}", random() % 3,
                          random() % 4 == 0, tags.empty() ? "" : "tags:\n", tags,
                          random() % 8 == 0 ? "" : text(14), random() % 16 == 0 ? "\xE5" : ""));
  }
  JobPool jobs(2);
  SearchIndex index(context, jobs);
  RootScan scan(context);
  testing::internal::CaptureStderr();
  const auto shown = [](const SearchResult& result) {
    return fmt::format("{}/{} {} {} {} {}", result.date.string(), result.seqNumber, result.time,
                       result.body, fmt::join(result.tags, "|"), result.snippet);
  };
  std::vector<std::pair<std::string, std::vector<std::string>>> queries;
  std::size_t hits = 0;
  for (int i = 0; i < 240; ++i) {
    auto& [words, expected] =
        queries.emplace_back((i % 5 == 0 ? "#" : "") + text(i % 3 + 1), std::vector<std::string>());
    const SearchQuery query(words);
    for (const MemoEntry& entry : index.allMemoEntries())
      if (const IndexedMemo memo{Memo(*entry.memo)}; !query.isEmpty() && query.matches(memo.text()))
        expected.push_back(shown(query.result(entry.date, memo)));
    hits += expected.size();
  }
  EXPECT_GT(hits, 400U);
  EXPECT_FALSE(index.isFiltered());
  for (const auto& [words, expected] : queries) {
    SCOPED_TRACE(testing::PrintToString(words));
    for (const Order order : {Order::newestFirst, Order::oldestFirst}) {
      std::vector<std::string> found;
      scan.search(SearchQuery(words), {}, order, [&](const SearchResult& result) {
        found.push_back(shown(result));
        return true;
      });
      if (order == Order::oldestFirst) std::ranges::reverse(found);
      EXPECT_EQ(found, expected);
    }
    std::vector<std::string> found;
    for (const SearchResult& result : index.search(words, SIZE_MAX)) found.push_back(shown(result));
    EXPECT_EQ(found, expected);
    while (!index.isFiltered()) std::this_thread::yield();
  }
  EXPECT_EQ(scan.allTags(), index.allTags());
  EXPECT_EQ(listed(scan, {.pinned = true}, Order::newestFirst),
            bodiesOf(TimelineQueryStore(store, &index).pinnedEntries()));
  testing::internal::GetCapturedStderr();
}

}  // namespace
}  // namespace nomely::test
