#include <gmock/gmock.h>

#include "Browser/MonthOverviewStore.h"
#include "Support/ManualClock.h"

namespace nomely::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Kind = OverviewAnomaly::Kind;

class MonthOverviewTest : public testing::Test {
 protected:
  void add(std::string_view date, std::string body, std::vector<std::string> tags = {},
           std::vector<std::string> attachments = {}) {
    Memo memo;
    memo.seqNumber = static_cast<std::int64_t>(entries.size()) + 1;
    memo.time = "08:00";
    memo.body = std::move(body);
    memo.tags = std::move(tags);
    memo.attachments = std::move(attachments);
    entries.push_back({day(date), std::make_shared<const Memo>(std::move(memo))});
  }
  [[nodiscard]] MonthOverview march() const {
    return MonthOverviewStore::compute(2026, 3, entries);
  }
  [[nodiscard]] std::vector<std::string> threads() const {
    std::vector<std::string> names;
    for (const TagThread& thread : march().threads) names.push_back(thread.tag);
    return names;
  }

  std::vector<MemoEntry> entries;
};

std::string repeated(std::string_view text, std::size_t count) {
  std::string all;
  for (std::size_t i = 0; i < count; ++i) all += text;
  return all;
}

TEST_F(MonthOverviewTest, CountsTheMonthAlone) {
  EXPECT_EQ(march().totalMemos, 0U);
  EXPECT_THAT(march().dailyCounts, IsEmpty());
  add("2026-03-31", "两字 two words", {}, {"a.M4A", "b.jpg"});
  add("2026-03-01", "一");
  add("2026-03-31", "");
  add("2026-02-28", "上月");
  add("2025-03-01", "去年");
  const MonthOverview overview = march();
  EXPECT_THAT(overview.dailyCounts, ElementsAre(std::pair(1U, 1U), std::pair(31U, 2U)));
  EXPECT_EQ(overview.totalMemos, 3U);
  EXPECT_EQ(overview.totalDays, 2U);
  EXPECT_EQ(overview.totalWords, 5U);
  EXPECT_EQ(overview.totalAttachments, 2U);
  EXPECT_EQ(overview.audioAttachments, 1U);
}

TEST_F(MonthOverviewTest, ThreadsRunOverSeveralDays) {
  add("2026-03-02", "乙", {"读书", "工作", "工作/会议", "_hidden"});
  add("2026-03-01", "甲", {"读书", "工作", "工作/会议", "_hidden", "一天"});
  add("2026-03-01", "丙", {"读书", "一天"});
  EXPECT_THAT(threads(), ElementsAre("读书", "工作/会议"));
  const TagThread reading = march().threads[0];
  EXPECT_THAT(reading.days, ElementsAre(1U, 2U));
  EXPECT_EQ(reading.count, 3U);
  EXPECT_EQ(reading.lastDay, 2U);
  EXPECT_EQ(reading.entries[0].preview, "甲");  // by day, then as they came
  EXPECT_EQ(reading.entries[1].id, "2026-03-01-3");
  EXPECT_EQ(march().threads[1].displayName, "会议");

  add("2026-03-09", "只有上级", {"工作"});
  EXPECT_THAT(threads(), ElementsAre("工作", "读书", "工作/会议"));
}

TEST_F(MonthOverviewTest, DuplicatesAreOfOneDayAndLong) {
  const std::string other = repeated("别", 60);
  const struct {
    const char* name;
    std::string first, second;
    bool isDuplicate;
  } cases[] = {
      {"too short", repeated("字", 49), repeated("字", 49), false},
      {"long enough", repeated("字", 50), repeated("字", 50), true},
      {"a tenth apart", repeated("字", 100), repeated("字", 112), false},
      {"less apart", repeated("字", 100), repeated("字", 111), true},
      {"marks don't count", repeated("字，", 60), repeated("字", 60), true},
      {"seven of ten", repeated("字", 42) + repeated("甲", 18),
       repeated("字", 42) + repeated("乙", 18), true},
      {"fewer", repeated("字", 41) + repeated("甲", 19), repeated("字", 41) + repeated("乙", 19),
       false},
      {"beyond what is compared", repeated("字", 120) + repeated("甲", 100),
       repeated("字", 120) + repeated("乙", 100), true},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    entries.clear();
    add("2026-03-05", other);
    add("2026-03-05", test.first);
    add("2026-03-05", test.second);
    add("2026-03-06", other);
    const auto anomalies = march().anomalies;
    ASSERT_EQ(anomalies.size(), test.isDuplicate ? 1U : 0U);
    if (!test.isDuplicate) continue;
    EXPECT_EQ(anomalies[0].seqNumber, 2);
    EXPECT_EQ(anomalies[0].label, "与同日另一条内容高度重复");
  }
}

TEST_F(MonthOverviewTest, DateInTheTextAgainstTheDay) {
  const struct {
    std::string body;
    const char* label;
  } cases[] = {
      {"2026年3月6日 晴", "正文写 2026.3.6，归档在 2026.3.5（正文晚于归档）"},
      {"2026年3月5日", nullptr},
      {"2026-03-05", nullptr},
      {"记于2026/02/10", "正文写 2026.2.10，归档在 2026.3.5（正文早于归档）"},
      {"2026.10.1", "正文写 2026.10.1，归档在 2026.3.5（正文早于归档）"},
      {"12026.3.6", nullptr},
      {"２０２６.3.6", nullptr},
      {repeated("字", 73) + "2026.3.6", nullptr},  // the day lies beyond
      {repeated("字", 72) + "2026.3.6", "正文写 2026.3.6，归档在 2026.3.5（正文晚于归档）"},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.body);
    entries.clear();
    add("2026-03-05", test.body);
    const auto anomalies = march().anomalies;
    ASSERT_EQ(anomalies.size(), test.label ? 1U : 0U);
    if (!anomalies.empty()) {
      EXPECT_EQ(anomalies[0].label, test.label);
    }
  }
}

TEST(PreviewLine, FirstLineThatSaysSomething) {
  const struct {
    const char* name;
    std::string body;
    std::string line;
  } cases[] = {
      {"empty", "", "（无正文）"},
      {"only structure", "# 标题\n- 项\n* 项\n> 引\n---\n***\n___\n  ", "（无正文）"},
      {"marks go", "  **粗** `码` *斜*  ", "粗 码 斜"},
      {"nothing but marks", "** **\n真的", "真的"},
      {"comment on one line", "<!-- original-base64:abc -->\n正文", "正文"},
      {"comment on several", "<!-- original\n正文?\n-->\n正文", "正文"},
      {"40 stay", repeated("👩‍👩‍👧", 40), repeated("👩‍👩‍👧", 40)},
      {"41 are cut", repeated("字", 41), repeated("字", 40) + "…"},
      {"tag line", "#标签\n正文", "正文"},
  };
  for (const auto& test : cases)
    EXPECT_EQ(MonthOverviewStore::previewLine(test.body), test.line) << test.name;
}

}  // namespace
}  // namespace nomely::test
