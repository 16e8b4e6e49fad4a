#include <fmt/format.h>

#include "Import/FlomoHTML.h"
#include "Import/FlomoMarkup.h"
#include "Import/ImportError.h"
#include "Support/ManualClock.h"
#include "Support/Proportion.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

using namespace FlomoMarkup;

// "2026-03-05 21:30 “晚上好” #随笔 <file/a.jpg>"; "?" where no time was readable.
std::string told(const ImportedMemo& memo) {
  std::string line = fmt::format("{} {}{} “{}”", memo.date.string(), memo.time,
                                 memo.isDated ? "" : "?", memo.body);
  for (const std::string& tag : memo.tags) line += " #" + tag;
  for (const std::string& reference : memo.mediaRefs) line += " <" + reference + ">";
  return line;
}

std::string told(const std::vector<ImportedMemo>& memos) {
  std::string lines;
  for (const ImportedMemo& memo : memos) lines += (lines.empty() ? "" : "\n") + told(memo);
  return lines;
}

std::string note(const std::string& content, const std::string& more = {},
                 const std::string& time = "2026-03-05 21:30:00") {
  return "<div class=\"memo\"><div class=\"time\">" + time + "</div><div class=\"content\">" +
         content + "</div>" + more + "</div>\n";
}

TEST(FlomoHTMLTest, Notes) {
  const auto dated = [](const std::string& rest) { return "2026-03-05 21:30 " + rest; };
  const std::pair<std::string, std::string> cases[] = {
      {"<html><body>nothing", ""},
      {note("<p>晚上好</p>", "<div class=\"files\"><img src=\"file/a.jpg\" /></div>") + note("二"),
       dated("“晚上好” <file/a.jpg>\n") + dated("“二”")},
      // Blocks keep words apart, and nothing else does.
      {note("<p>a</p><p><b>b</b>c</p>\n<ul><li>d</li><li>e</li></ul>f<br/>g"),
       dated("“a\nbc\nd\ne\nf\ng”")},
      {note("<h2>a</h2><hr>b<BR>c<blockquote>d</blockquote><brx>e"), dated("“a\nb\nc\nd\ne”")},
      {note("一<div>二<div>三</div></div>四"), dated("“一\n二\n三\n四”")},
      {note("一<div>二", "<div class=\"files\"></div>"), dated("“一\n二”")},
      {"<div class=\"memo\"><div class=\"content\">cut off", ""},
      {"<div class=\"memo\"><div class=\"time\">2026-03-05</div>", ""},
      {note("<p> </p>") + note("", "<audio controls src='a.m4a'></audio>"), dated("“” <a.m4a>")},
      {note("1 &lt; 2 &amp;lt; &nbsp;&quot;a&#39;&hellip;&mdash;&ndash;&lsquo;&rdquo;&#8217;"),
       dated("“1 < 2 <  \"a'...—–'\"&#8217;”")},
      {note("a <b c\nd> <> e <"), dated("“a  <> e <”")},
      {note("\xEF\xBB\xBFline\r\nline\rline"), dated("“line\nline\nline”")},
      // Tags: the linked ones, else those in the text; hidden ones stay text.
      {note("<a class=\"tag\" href=\"x\">#读书/小说</a> 好 <a class=\"tag\">#_feishu_msg_1</a> #a"),
       dated("“好 #_feishu_msg_1 #a” #读书/小说")},
      {note("<a class=\"tag\">#a&amp;b</a><a class=\"tag\">#a&amp;b</a>c #a&amp;b"),
       dated("“c” #a&b")},
      {note("<p style=\"color:#fff\">it&#39;s #好,#坏 #_x ##</p>"),
       dated("“it's , #_x ##” #好 #坏")},
      {note("<p>#标签</p>"), dated("“” #标签")},
      // Times.
      {note("a", "", "2026/03/05 07:08"), "2026-03-05 07:08 “a”"},
      {note("a", "", " 2026/03/05 "), "2026-03-05 00:00 “a”"},
      {note("a", "", "2026/3/5") + note("b", "", "2026-02-30 10:00:00") +
           note("c", "", "2026-03-05 24:00") + note("d", "", "2026-03-05\n10:00"),
       "2026-03-01 00:00? “a”\n2026-03-01 00:00? “b”\n2026-03-01 00:00? “c”\n"
       "2026-03-01 00:00? “d”"},
  };
  for (const auto& [html, expected] : cases) {
    SCOPED_TRACE(html);
    EXPECT_EQ(told(FlomoHTML::parse(html, day("2026-03-01"))), expected);
    std::vector<ImportedMemo> memos;
    FlomoHTML::Reader reader(day("2026-03-01"),
                             [&](ImportedMemo&& memo) { memos.push_back(std::move(memo)); });
    for (const char c : html) reader.feed({&c, 1});
    reader.finish();
    EXPECT_EQ(told(memos), expected) << "byte by byte";
  }
  EXPECT_THROW((void)FlomoHTML::parse(note("\xFF"), day("2026-03-01")), ImportError);
}

// What the scanners say by hand.
TEST(FlomoHTMLTest, Expressions) {
  const RegularExpression media(R"(<(?:img|audio)\b[^>]*\bsrc\s*=\s*["']([^"']+)["'][^>]*>)");
  const RegularExpression linked(R"(<a[^>]*class="tag"[^>]*>#(.*?)</a>)");
  const RegularExpression time(R"(<div class="time">(.*?)</div>)");
  const RegularExpression plain(R"(#([^\s#,<]+))");
  const auto found = [](const RegularExpression& expression, const std::string& text) {
    std::vector<std::string> all;
    for (const Groups& groups : groupsOf(expression, text, {1})) all.push_back(groups[1]);
    return all;
  };
  const auto check = [&](const std::string& text) {
    EXPECT_EQ(mediaOf(text), found(media, text));
    const auto isPlain = [](const std::string& tag) {
      return tag.find_first_of("< ") == std::string::npos;
    };
    std::vector<std::string> tags = found(linked, text);
    std::erase(tags, "");
    if (std::ranges::all_of(tags, isPlain)) {
      EXPECT_EQ(linkedTagsOf(text), tags);
    }
    const auto times = found(time, text);
    EXPECT_EQ(timeOf(text).value_or("none"), times.empty() ? "none" : times[0]);
    EXPECT_EQ(tagsIn(text), found(plain, text));
  };
  onRandomTexts("<img¦<audio¦ src¦=¦\"¦'¦>¦a¦x¦-src=\"b\"¦\n¦ ¦<", 14, 20000, check);
  onRandomTexts("<a¦ class=\"tag\"¦>#¦</a>¦x¦读¦\n¦ ¦>¦,¦#¦\xC2\x85", 12, 20000, check);
  onRandomTexts("<div class=\"time\">¦</div>¦x¦\n¦\xE2\x80\xA8¦>", 12, 20000, check);
}

TEST(FlomoHTMLTest, HostileTextTakesTimeInProportion) {
  for (const char* piece : {"<", "<img ", "<img src=\"", "<a class=\"tag\">#", "<div>", "</div ",
                            "<div class=\"time\">", "<div class=\"content\">", "#", "&", "<p>\n"})
    expectProportional(200'000, [&](std::size_t size) {
      (void)FlomoHTML::parse(note(filledWith(piece, size)), day("2026-03-01"));
    });
}

}  // namespace
}  // namespace nomely::test
