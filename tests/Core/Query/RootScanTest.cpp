#include <random>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "Core/Query/RootScan.h"
#include "Core/Query/TimelineQueryStore.h"
#include "Platform/Cancellation.h"
#include "Support/RandomText.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
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
  const struct {
    Day date;
    const char* body;
    const char* time;
    bool pinned;
    bool locked;
  } memos[] = {{yesterday, "d", "08:00", true, false}, {yesterday, "e", "09:00", false, false},
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
  switch (style) {
    case 0:
    case 1: {  // escaped as a whole, or what needs it
      for (const char16_t unit : toUtf16(tag))
        if (style == 0 && (unit < 0xD800 || unit > 0xDFFF))
          text += fmt::format("\\u{:04x}", static_cast<unsigned>(unit));
        else
          return "- |-\n  " + tag + "\n";
      return "- \"" + text + "\"\n";
    }
    case 2:
      for (const char c : tag) text += c == '\'' ? "''" : std::string(1, c);
      return "- '" + text + "'\n";
    case 3:
      return "- >-\n  " + tag + "\n";
    default:
      return "- " + tag + "\n";
  }
}

// On few different characters, so that many words are nearly there.
TEST_F(RootScanTest, FindsWhatAnIndexFinds) {
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
    const Day date = today.plusDays(static_cast<int>(random() % 40));
    std::string content = "---\ntime: '09:0" + std::to_string(random() % 3) + "'\n";
    if (random() % 4 == 0) content += "pinned: true\n";
    std::string tags;
    for (auto count = random() % 3; count > 0; --count) tags += spelled(text(4), random);
    if (!tags.empty()) content += "tags:\n" + tags;
    content += "---\n\n" + (random() % 8 == 0 ? "" : text(14));
    if (random() % 16 == 0) content += '\xE5';
    writeFile(context.paths.dayFolder(date) /
                  (random() % 16 == 0 ? "7.md" : DiskPaths::memoFileName(1 + i % 20)),
              content);
  }
  JobPool jobs(2);
  SearchIndex index(context, jobs);
  RootScan scan(context);
  testing::internal::CaptureStderr();
  const auto shown = [](const SearchResult& result) {
    return fmt::format("{}/{} {} {} {} {}", result.date.string(), result.seqNumber, result.time,
                       result.body, fmt::join(result.tags, "|"), result.snippet);
  };
  std::size_t hits = 0;
  for (int i = 0; i < 240; ++i) {
    const std::string query = (i % 5 == 0 ? "#" : "") + text(i % 3 + 1);
    SCOPED_TRACE(testing::PrintToString(query));
    std::vector<std::string> expected;
    for (const SearchResult& result : index.search(query, SIZE_MAX))
      expected.push_back(shown(result));
    hits += expected.size();
    for (const Order order : {Order::newestFirst, Order::oldestFirst}) {
      std::vector<std::string> found;
      scan.search(SearchQuery(query), {}, order, [&](const SearchResult& result) {
        found.push_back(shown(result));
        return true;
      });
      if (order == Order::oldestFirst) std::ranges::reverse(found);
      EXPECT_EQ(found, expected);
    }
  }
  EXPECT_GT(hits, 400U);
  EXPECT_EQ(scan.allTags(), index.allTags());
  std::vector<std::string> listed = this->listed(scan, {.pinned = true}, Order::newestFirst);
  std::vector<std::string> expected;
  for (const MemoEntry& entry : TimelineQueryStore(store, &index).pinnedEntries())
    expected.push_back(entry.memo->body);
  EXPECT_EQ(listed, expected);
  testing::internal::GetCapturedStderr();
}

}  // namespace
}  // namespace nomely::test
