#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Export/InlineHTML.h"
#include "Export/MarkdownHTML.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

TEST(MarkdownHTMLTest, Plain) {
  const struct {
    const char* name;
    std::string text;
    std::string expected;
  } cases[] = {
      {"escaped", "a < b & c > d", "<p>a &lt; b &amp; c &gt; d</p>"},
      {"marks", "**bold** and *it*", "<p><strong>bold</strong> and <em>it</em></p>"},
      {"headings", "# a\n## b\n  ### c\n#### d\n#e",
       "<h1>a</h1>\n<h2>b</h2>\n<h3>c</h3>\n<p>#### d</p>\n<p>#e</p>"},
      {"rules", "---\n*****\n___\n--\n-*-", "<hr>\n<hr>\n<hr>\n<p>--</p>\n<p>-*-</p>"},
      {"checklist, then a list", "- [x] done\n- [ ]\n- [X]b\n- a\n* c\n\n- d",
       "<ul class=\"checklist\">\n<li><input type=\"checkbox\" checked disabled>done</li>\n"
       "<li><input type=\"checkbox\" disabled></li>\n"
       "<li><input type=\"checkbox\" checked disabled>b</li>\n</ul>\n"
       "<ul>\n<li>a</li>\n<li>c</li>\n</ul>\n<ul>\n<li>d</li>\n</ul>"},
      {"numbers", "1. a\n٢.\u3000b\n3.c\n4. ",
       "<ol>\n<li>a</li>\n<li>b</li>\n</ol>\n<p>3.c</p>\n<p>4.</p>"},
      {"quotes", "- x\n> a\n>b",
       "<ul>\n<li>x</li>\n</ul>\n<blockquote>a</blockquote>\n<p>&gt;b</p>"},
      {"code", "- x\n ```js\n  a<b\n\n*c*\n```\nd",
       "<ul>\n<li>x</li>\n</ul>\n<pre><code>  a&lt;b\n\n*c*</code></pre>\n<p>d</p>"},
      {"code left open", "```\na\n- b", "<pre><code>a\n- b</code></pre>"},
      {"table", "x\n| a | *b* |\n|---|---|\n| 1 |\n| <i> |\ny",
       "<p>x</p>\n<table><thead><tr><th>a</th><th><em>b</em></th></tr></thead><tbody></tbody>"
       "</table>\n<p>| 1 |</p>\n<p>| &lt;i&gt; |</p>\n<p>y</p>"},
      {"rows filled up", "a|b\n---|---\n1|2|3\n|4|",
       "<table><thead><tr><th>a</th><th>b</th></tr></thead><tbody><tr><td>1</td><td>2</td></tr>"
       "</tbody></table>\n<p>|4|</p>"},
      {"nothing", "\n \n", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(markdownToHTML(c.text, RenderMode::plain), c.expected);
  }
}

TEST(MarkdownHTMLTest, StyledIsPlainWithStyles) {
  const std::string text = "## a\n- b\n> c\n\n1. d\n\n`e`\na|b\n---|---\n1|2";
  const RegularExpression styles(R"( style="[^"]+"|<div style=[^>]*>\n|\n</div>)");
  const std::string styled = markdownToHTML(text, RenderMode::styled);
  EXPECT_EQ(toUtf8(styles.replacingMatches(toUtf16(styled), u"")),
            markdownToHTML(text, RenderMode::plain));
  EXPECT_THAT(styled, testing::HasSubstr("<h2 style=\"color:#ffffff;font-size:28px;"));
}

TEST(InlineHTMLTest, IsThatOfTheExpressions) {
  const struct {
    RegularExpression expression;
    std::u16string_view replacement;
  } rules[] = {
      {RegularExpression(R"(\*\*(.+?)\*\*)"), u"<strong>$1</strong>"},
      {RegularExpression(R"(\*(.+?)\*)"), u"<em>$1</em>"},
      {RegularExpression("`(.+?)`"), u"<code>$1</code>"},
      {RegularExpression(R"(\[(.+?)\]\((.+?)\))"), u"<a href=\"$2\">$1</a>"},
  };
  constexpr std::string_view pieces = "*¦**¦`¦[¦](¦]¦(¦)¦a¦<¦&¦中¦😀¦\r¦\u2028¦/¦$1";
  onRandomTexts(pieces, 14, 30'000, [&](const std::string& line) {
    std::u16string expected = toUtf16(InlineHTML::escapeText(line));
    for (const auto& [expression, replacement] : rules)
      expected = expression.replacingMatches(expected, replacement);
    ASSERT_EQ(InlineHTML::convert(line), toUtf8(expected));
  });
}

TEST(InlineHTMLTest, AddressesThatRunScripts) {
  for (const char* address :
       {"javascript:alert(1", "java\tscript:x", "&#106;avascript:x", "data:text/html,x"})
    EXPECT_EQ(InlineHTML::convert(std::string("[a](") + address + ")").find("<a"),
              std::string::npos);
  EXPECT_EQ(InlineHTML::convert("[a](x\" onclick=\"y) [b](javascript:1) [c](z)"),
            "<a href=\"x&quot; onclick=&quot;y\">a</a> [b](javascript:1) <a href=\"z\">c</a>");
}

}  // namespace
}  // namespace nomely::test
