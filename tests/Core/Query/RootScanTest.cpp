#include <random>

#include <gmock/gmock.h>

#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Query/RootScan.h"
#include "Core/Query/SearchIndex.h"
#include "Platform/Cancellation.h"
#include "Support/RandomFrontmatter.h"
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
  fs::create_directory_symlink("itself", context.paths.dayFolder(day("2026-03-07")));
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

}  // namespace
}  // namespace nomely::test
