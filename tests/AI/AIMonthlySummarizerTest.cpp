#include "AI/LanguageVendor.h"
#include "AI/Summaries/AIMonthlySummarizer.h"
#include "AI/Summaries/SummarizerError.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"
#include "Core/Storage/WriteError.h"
#include "Support/ErrorKind.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

using Kind = SummarizerError::Kind;
using Month = AIMonthlySummarizer::Month;
using Style = SummaryStyle;

class AIMonthlySummarizerTest : public StoreTest {
 protected:
  void add(const std::string& day, const std::string& body, std::vector<std::string> tags = {}) {
    (void)store.createMemo(*Day::parse(day), {.body = body, .tags = std::move(tags)});
  }
  // An earlier month's summary, made at `createdAt`.
  void addSummary(const std::string& day, const std::string& body, const std::string& header) {
    static int number = 100;
    writeFile(folder.path() / day / (std::to_string(++number) + ".md"),
              "---\ntime: '10:00'\n" + header + "\n---\n" + body);
  }
  void addNotes() {
    add("2026-01-31", "元旦后", {"计划"});
    add("2026-03-01", "一早\n\n跑步 `x`", {"运动", "_私密", "工作/会"});
    add("2026-03-01", " 晚上\n", {"工作/会"});
    add("2026-03-15", MemoTextUtilities::appendOriginal("改之前的秘密", "改好的"), {"_隐"});
    add("2026-03-31", "只有子标签", {"个人专栏/月度总结/2026-06", "运动"});
    add("2026-03-31", "总结自己", {"个人专栏"});
    add("2026-03-31", " \n\t");
    add("2026-04-01", "愚人", {"b", "c", "d", "e", "f", "g", "h", "i", "j"});
    writeFile(folder.path() / "2026-03-02" / "001.md", "no header");
  }
  AIService::Reply ask(const AIMonthlySummarizer::Question& question) {
    AIService service(vendor.config(), *vendor.http);
    return AIMonthlySummarizer::ask(question, service, {});
  }
  static std::optional<Kind> failure(const std::function<void()>& body) {
    return kindOf<SummarizerError>(body);
  }

  LanguageVendor vendor;
  MemoService memos{context};
  AIMonthlySummarizer summarizer{memos};
};

TEST_F(AIMonthlySummarizerTest, WholeRequests) {
  addNotes();
  vendor.replies("回复", "length");
  for (const SummaryStyleInfo& info : SummaryStyleInfo::all()) {
    const AIService::Reply month = ask(summarizer.monthQuestion({2026, 3}, info.style, {}));
    expectGolden("month-" + std::string(info.name), vendor.requests().back());
    EXPECT_EQ(month.text, info.isPro ? "## 数据总览\n- 本月共写了 3 天、4 条笔记\n- 高频标签："
                                       "`工作/会`(2次) `运动`(2次) `个人专栏/月度总结/2026-06`(1次)"
                                       "\n\n回复"
                                     : "回复");
    EXPECT_TRUE(month.isCutOff);
    if (!info.annualPrompt) {
      EXPECT_EQ(failure([&] { (void)summarizer.yearQuestion(2026, info.style, {}); }),
                Kind::unsupportedStyle);
      continue;
    }
    EXPECT_EQ(ask(summarizer.yearQuestion(2026, info.style, {})).text, "回复");
    expectGolden("year-" + std::string(info.name), vendor.requests().back());
  }
  addSummary("2026-11-02", "# 二月\n正文\n", "tags: [个人专栏, 个人专栏/月度总结/2026-02]");
  (void)ask(summarizer.monthQuestion({2026, 3}, Style::warm, {}));
  expectGolden("month-with-previous", vendor.requests().back());
}

TEST_F(AIMonthlySummarizerTest, TheLatestSummaryOfTheMonthBefore) {
  const auto previous = [&](int year, int month) {
    return summarizer.previousMonthSummary({year, month}, {}).value_or("none");
  };
  EXPECT_EQ(previous(2026, 1), "none");
  const std::string tag = "tags: [个人专栏, 个人专栏/月度总结/2025-12]";
  addSummary("2026-01-05", "无时间", tag);
  addSummary("2026-01-04", "早", tag + "\ncreated_at: '2026-01-04T09:00:00+08:00'");
  EXPECT_EQ(previous(2026, 1), "早");
  addSummary("2025-12-01", "晚",
             R"(tags: ["\u4e2a\u4eba\u4e13\u680f/\u6708\u5ea6\u603b\u7ed3/2025-12"])"
             "\ncreated_at: '2026-01-04T09:00:01+08:00'");
  addSummary("2026-01-06", "晚，后遇到", tag + "\ncreated_at: '2026-01-04T09:00:01+08:00'");
  addSummary("2026-01-07", "正文提到 个人专栏/月度总结/2025-12", "created_at: '2027'");
  addSummary("2026-01-07", "别的月", "tags: [个人专栏/月度总结/2025-120]\ncreated_at: '2027'");
  EXPECT_EQ(previous(2026, 1), "晚");
  EXPECT_EQ(previous(2026, 2), "none");
}

TEST_F(AIMonthlySummarizerTest, WhatGoesToNobody) {
  EXPECT_EQ(failure([&] {
              (void)summarizer.monthQuestion({2026, 13}, Style::diary, {});
            }),
            Kind::invalidDate);
  add("2026-03-01", "只有专栏", {"个人专栏"});
  add("2026-03-01", "私事", {"私/家"});
  const AIMonthlySummarizer careful(memos, {"私"});
  EXPECT_EQ(failure([&] {
              (void)careful.monthQuestion({2026, 3}, Style::diary, {});
            }),
            Kind::noNotes);
  EXPECT_EQ(failure([&] { (void)careful.yearQuestion(2026, Style::proValue, {}); }), Kind::noNotes);
  EXPECT_EQ(summarizer.collectNotes({2026, 3}, false, {}).size(), 2U);
  EXPECT_EQ(summarizer.collectNotesForYear(2026, {}),
            (std::vector<NoteEntry>{{*Day::parse("2026-03-01"), "私事", {"私/家"}}}));
  addSummary("2026-04-01", "也私", "tags: [个人专栏/月度总结/2026-02, 私]");
  EXPECT_FALSE(careful.previousMonthSummary({2026, 3}, {}));
  vendor.replies(" \n");
  EXPECT_EQ(failure([&] {
              (void)ask(summarizer.monthQuestion({2026, 3}, Style::proValue, {}));
            }),
            Kind::emptyReply);
}

}  // namespace
}  // namespace nomely::test
