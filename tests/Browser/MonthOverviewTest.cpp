#include "Browser/MonthOverviewStore.h"
#include "Support/ManualClock.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

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
  const auto parts = [](std::size_t same, const char* different, std::size_t count) {
    return repeated("字", same) + repeated(different, count);
  };
  for (const auto& [first, second, isDuplicate] :
       {std::tuple(parts(49, "", 0), parts(49, "", 0), false),
        {parts(50, "", 0), parts(50, "", 0), true},
        {parts(100, "", 0), parts(112, "", 0), false},
        {parts(100, "", 0), parts(111, "", 0), true},
        {repeated("字，", 60), parts(60, "", 0), true},
        {parts(42, "甲", 18), parts(42, "乙", 18), true},
        {parts(41, "甲", 19), parts(41, "乙", 19), false},
        {parts(120, "甲", 100), parts(120, "乙", 100), true}}) {
    SCOPED_TRACE(first + "\n" + second);
    entries.clear();
    add("2026-03-05", other);
    add("2026-03-05", first);
    add("2026-03-05", second);
    add("2026-03-06", other);
    const auto anomalies = march().anomalies;
    ASSERT_EQ(anomalies.size(), isDuplicate ? 1U : 0U);
    if (!isDuplicate) continue;
    EXPECT_EQ(anomalies[0].seqNumber, 2);
    EXPECT_EQ(anomalies[0].label, "与同日另一条内容高度重复");
  }
}

TEST_F(MonthOverviewTest, DateInTheTextAgainstTheDay) {
  const std::string after = "正文写 2026.3.6，归档在 2026.3.5（正文晚于归档）";
  for (const auto& [body, label] :
       {std::pair(std::string("2026年3月6日 晴"), after),
        {"2026年3月5日", ""},
        {"2026-03-05", ""},
        {"记于2026/02/10", "正文写 2026.2.10，归档在 2026.3.5（正文早于归档）"},
        {"2026.10.1", "正文写 2026.10.1，归档在 2026.3.5（正文早于归档）"},
        {"12026.3.6", ""},
        {"２０２６.3.6", ""},
        {repeated("字", 73) + "2026.3.6", ""},  // the day lies beyond
        {repeated("字", 72) + "2026.3.6", after}}) {
    SCOPED_TRACE(body);
    entries.clear();
    add("2026-03-05", body);
    const auto anomalies = march().anomalies;
    EXPECT_EQ(anomalies.empty() ? "" : anomalies[0].label, label);
  }
}

TEST(PreviewLine, FirstLineThatSaysSomething) {
  for (const auto& [body, line] :
       {std::pair(std::string(), std::string("（无正文）")),
        {"# 标题\n- 项\n* 项\n> 引\n---\n***\n___\n  ", "（无正文）"},
        {"  **粗** `码` *斜*  ", "粗 码 斜"},
        {"** **\n真的", "真的"},
        {"<!-- original-base64:abc -->\n正文", "正文"},
        {"<!-- original\n正文?\n-->\n正文", "正文"},
        {repeated("👩‍👩‍👧", 40), repeated("👩‍👩‍👧", 40)},
        {repeated("字", 41), repeated("字", 40) + "…"},
        {"#标签\n正文", "正文"}})
    EXPECT_EQ(MonthOverviewStore::previewLine(body), line);
}

}  // namespace
}  // namespace nomely::test
