#include <map>
#include <ranges>

#include <fmt/format.h>

#include "Core/Markdown/Clipboard/HtmlScanner.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

using HtmlScanner::Closing;
using HtmlScanner::Names;
using HtmlScanner::TagKind;

// Pieces of what the expressions look at, among them what folds to it and what ends no word.
const std::map<std::string_view, std::string_view> subjects{
    {"script", "<script¦<STYLE¦</script>¦<ﬆyle¦</ſtyle>¦</ﬅyle>¦</ſcript>"},
    {"blocks",
     "<h1¦<H2>¦</h1>¦</h2>¦<h7¦<pre>¦</PRE>¦<blockquote¦<h3>¦<blocKquote>¦</blockquote>¦<li¦</li>¦"
     "</h3>¦<code¦</code>"},
    {"table", "<td>¦<th¦</TD>¦</th>¦<tr>¦</tr>¦<table>¦</table>¦<t"},
    {"inline",
     "<b>¦</b>¦<strong¦<ﬆrong>¦</strong>¦</ſtrong>¦<i>¦</i>¦<em>¦</em>¦<br¦<br/>¦<hr¦<p¦</p>¦"
     "<section>¦</ſection¦<div¦<ARTICLE>¦<body>¦<BODY x"},
    {"link",
     "<a ¦<a¦<a href¦href¦HREF=¦href=\"¦href = '¦'>¦\">¦</a>¦</A>¦<a href='x'>¦href='¦<a ¦</a>"},
    {"language",
     "class¦CLASS¦claß=\"¦cla\u1E9E='¦class=\"¦class = '¦language-¦Language-¦language-c¦c++¦-¦l¦"
     "claſs='"},
};

template <typename Check>
void onTextsOf(std::string_view subject, int rounds, Check check) {
  constexpr std::string_view shared = "¦<¦</¦>¦/¦ ¦\n¦x¦中¦😀¦1¦_¦\u0301¦\u200D¦\u2028¦é¦=¦\"¦'¦K¦ſ";
  const std::string_view own = subjects.at(subject);
  onRandomTexts(fmt::format("{0}¦{0}¦{0}{1}", own, shared), 15, rounds, check);
}

std::string place(const std::string& text, std::string_view part) {
  const auto offset = static_cast<std::size_t>(part.data() - text.data());
  return std::to_string(toUtf16(text.substr(0, offset)).size());
}

struct Comparison {
  std::string subject;
  std::string pattern;
  std::vector<std::size_t> groups;
  std::function<std::vector<Groups>(const std::string&)> scan;
};

// `names` as in an expression: "strong|b".
auto elementsOf(const std::string& names, Closing closing = Closing::sameName) {
  return [names, closing](const std::string& text) {
    std::vector<std::string_view> all;
    for (const auto name : std::views::split(names, '|'))
      all.emplace_back(name.begin(), name.end());
    std::vector<Groups> found;
    for (const auto& element : HtmlScanner::elements(text, Names(all), closing))
      found.push_back(
          {place(text, element.whole), std::string(element.whole), std::string(element.content)});
    return found;
  };
}

template <typename Find>
auto partsOf(Find find) {
  return [find](const std::string& text) {
    std::vector<Groups> found;
    for (const std::string_view part : find(text))
      found.push_back({place(text, part), std::string(part)});
    return found;
  };
}

TEST(HtmlScannerTest, FindsWhatTheExpressionsMatch) {
  using std::string_view;
  const auto links = [](const std::string& text) {
    std::vector<Groups> found;
    for (const auto& link : HtmlScanner::links(text))
      found.push_back({place(text, link.whole), std::string(link.whole), std::string(link.address),
                       std::string(link.label)});
    return found;
  };
  std::vector<Comparison> comparisons{
      {"table",
       R"((?is)<t[hd]\b[^>]*>(.*?)</t[hd]>)",
       {0, 1},
       elementsOf("th|td", Closing::anyOfTheNames)},
      {"inline", R"((?is)<hr\b[^>]*>)", {0}, partsOf([](string_view text) {
         return HtmlScanner::tags(text, {"hr"}, TagKind::startTags);
       })},
      {"inline", R"((?is)<body\b[^>]*>)", {0}, partsOf([](string_view text) {
         return HtmlScanner::tags(text, {"body"}, TagKind::startTags);
       })},
      {"inline", R"((?is)</?(p|div|section|article)\b[^>]*>)", {0}, partsOf([](string_view text) {
         return HtmlScanner::tags(text, {"p", "div", "section", "article"}, TagKind::allTags);
       })},
      {"inline", "(?is)<[^>]+>", {0}, partsOf(HtmlScanner::anyTags)},
      {"inline", R"((?is)<br\s*/?>)", {0}, partsOf(HtmlScanner::lineBreaks)},
      {"link", R"((?is)<a\b[^>]*href\s*=\s*["']([^"']+)["'][^>]*>(.*?)</a>)", {0, 1, 2}, links},
  };
  for (const auto& [subject, names] : rowsOf<2>(
           "script¦script|style¦blocks¦pre¦blocks¦h1|h2|h3|h4|h5|h6¦blocks¦blockquote¦blocks¦li¦"
           "blocks¦code¦table¦table¦table¦tr¦inline¦strong|b¦inline¦em|i"))
    comparisons.push_back({subject,
                           fmt::format(R"((?is)<({})\b[^>]*>(.*?)</\1>)", names),
                           {0, 2},
                           elementsOf(names)});
  for (const Comparison& c : comparisons) {
    SCOPED_TRACE(c.pattern);
    const RegularExpression pattern(c.pattern);
    std::size_t met = 0;
    onTextsOf(c.subject, 5'000, [&](const std::string& text) {
      const std::vector<Groups> expected = groupsOf(pattern, text, c.groups);
      ASSERT_EQ(c.scan(text), expected);
      met += expected.size();
    });
    EXPECT_GT(met, 50U);
  }
}

TEST(HtmlScannerTest, CodeLanguageIsThatOfTheExpression) {
  const RegularExpression pattern(R"((?is)class\s*=\s*["'][^"']*language-([A-Za-z0-9_+-]+))");
  int met = 0;
  onTextsOf("language", 30'000, [&](const std::string& text) {
    const std::vector<Groups> found = groupsOf(pattern, text, {1});
    const std::string expected = found.empty() ? "" : found.front().back();
    ASSERT_EQ(HtmlScanner::codeLanguage(text), expected);
    met += expected.empty() ? 0 : 1;
  });
  EXPECT_GT(met, 250);
}

}  // namespace
}  // namespace nomely::test
