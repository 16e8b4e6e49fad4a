#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include "Core/Lifecycle/Maintenance/LegacyColorSpans.h"
#include "Core/Lifecycle/Maintenance/LegacyDay.h"
#include "Platform/Text/RegularExpression.h"
#include "Platform/Text/Unicode.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

std::string shown(const LegacyDay& day) {
  std::string text = fmt::format("{}", fmt::join(day.tags, "|"));
  if (day.mood) text += fmt::format(" mood {}", *day.mood);
  for (const auto& [time, body] : day.sections)
    text += fmt::format("\n[{}] {}", time.value_or(""), body);
  return text;
}

TEST(LegacyDayTest, EveryLineOfAnOldTextIsInAMemo) {
  const struct {
    const char* text;
    const char* expected;
  } cases[]{
      {"---\ntags: [工作, 生活]\nmood: 4\n---\n\n## 08:05\n早起\n\n## 21:30\n\n晚安\n\n",
       "工作|生活 mood 4\n[08:05] 早起\n[21:30] 晚安"},
      {"\xEF\xBB\xBF---\r\nTags: a，b、#c\r\nmood: \"3\"\r\n---\r\n## 8：05\r\nx\r\ny\r\n",
       "a|b|c mood 3\n[08:05] x\ny"},
      {"---\ntags:\n  - \"a, b\"\n- 'c'\nmood: 开心\nweather: 晴\n---\n前言\n## 9:00 "
       "跑步\n五公里\n",
       "a, b|c\n[09:00] mood: 开心\nweather: 晴\n\n前言\n\n## 9:00 跑步\n五公里"},
      {"---\ntags: [\"a, b\", 'c d',\n  “e”]\nmood:\n---\n", "a, b|c d|e\n[] "},
      {"---\ntags: [a, b\nmood: 1\nmood: 2\n---\n", "a|b mood 1\n[] mood: 2"},
      {"---\ntags: #旅行 #工作/会议 #旅行\n---\n没有段落\n第二行",
       "旅行|工作/会议\n[] 没有段落\n第二行"},
      {"没有文件头\n\n## 下午3:20 会议\n", "\n[15:20] 没有文件头\n\n## 下午3:20 会议"},
      {"## 12:30 AM\n## 10:15:30\n## 25:99\nz\n### 小标题\n##无空格\n",
       "\n[00:30] ## 12:30 AM\n[10:15] ## 10:15:30\n[] ## 25:99\nz\n### 小标题\n##无空格"},
      {"---\ntags: a\n没有结束\n## 07:00\n", "\n[07:00] ---\ntags: a\n没有结束"},
      {"\n \n", ""},
      {"---\n---\n\n", ""},
      {"## 06:00\n", "\n[06:00] "},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(shown(LegacyDay::parse(text)), expected);
}

TEST(LegacyColorSpansTest, UnwrapWhatTheExpressionMatchesUntilNothingDoes) {
  const RegularExpression expression(
      R"RE(<span\s+style="color:\s*#[0-9A-Fa-f]{6}">([\s\S]*?)</span>)RE");
  onRandomTexts(
      "<span style=\"color: #FF0000\">¦<span style=\"font-size:18px\">¦</span>¦<sp¦an¦字¦\n", 14,
      3000, [&](const std::string& text) {
        std::u16string expected = toUtf16(text);
        for (std::u16string before; before != expected;) {
          before = expected;
          expected = expression.replacingMatches(before, u"$1");
        }
        EXPECT_EQ(LegacyColorSpans::unwrapped(text), toUtf8(expected));
      });
}

}  // namespace
}  // namespace nomely::test
