#include <chrono>
#include <cstdlib>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Core/Markdown/Clipboard/ClipboardMarkdownImporter.h"
#include "Support/RandomText.h"
#include "Support/TemporaryFolder.h"
#include "Support/TestPaths.h"

namespace nomely::test {
namespace {

std::string pasted(std::string_view html) {
  return ClipboardMarkdownImporter::markdown(html).value_or("(none)");
}

TEST(ClipboardMarkdownImporterTest, Markup) {
  const struct {
    const char* name;
    std::string html;
    std::string expected;
  } cases[] = {
      {"marked fragment", "x<!--StartFragment--><b>a</b><!--EndFragment-->y", "**a**"},
      {"marks in the wrong order", "x<!--EndFragment-->a<!--StartFragment-->y", "xay"},
      {"body", "<title>t</title><BODY class=x>a</Body>b", "a"},
      {"body left open", "<title>t</title><body>a", "a"},
      {"line ends", "\uFEFFa\r\nb\rc&#13;d", "a\nb\nc\nd"},
      {"scripts", "a<script>if (x<y) z()</SCRIPT><style>p{}</style>b", "ab"},
      {"code block", "<pre><code class=\"hl language-c++\">\n a&lt;b\n\n\nc</code></pre>",
       "```c++\na<b\n\nc\n```"},
      {"markup shown in code and tables",
       "<pre>&lt;b>&amp;amp;lt;</pre><table><tr><td>&lt;td&gt;</td></tr></table><p>",
       "```\n<b>&amp;lt;\n```\n\n| <td> |\n| --- |"},
      {"a decoded < is no markup",
       "<h2>a &lt; b</h2><li>vector&lt;int&gt; &#60;<a href='x?a&lt;b'>p &lt;q&gt;</a></li>"
       "<a href='x?a&lt;b&amp;amp;c'>p &amp;lt;q&gt;</a><b>&lt;b&gt;</b><em>1 &lt; 2</em>"
       "<code>map&lt;k,v&gt;</code><blockquote>a &lt; b</blockquote><p>&lt;p></p>",
       "## a < b\n\n- vector<int> <p <q>[p <q>](x?a<b&c)**<b>***1 < 2*`map<k,v>`\n> a < b\n\n<p>"},
      {"table", "<table><tr><th>a<br>b</th></tr><tr></tr><tr><td>c|d<td>e</td></tr></table>",
       "| a b |\n| --- |\n| c\\|de |"},
      {"rows of different length",
       "<table><tr><td>a</td></tr><tr><td>b</td><td>c</td></tr></table>",
       "| a |  |\n| --- | --- |\n| b | c |"},
      {"table without rows", "a<table><caption>x</caption></table>b", "ab"},
      {"headings", "<h1>a</h1><h6 id=x>b<br><i>c</i></h6><h2></h2><h3>x</h4>",
       "# a\n\n###### b\nc\n\n##\nx"},
      {"rules and breaks", "a<hr/>b<br>c<br />d", "a\n---\nb\nc\nd"},
      {"quote", "<blockquote><p>a</p>\n\n\n b</blockquote>c", "> a\n>\n> b\nc"},
      {"lists", "<ol><li>a</li><li><b>b</b><br>c</li></ol>", "- a\n- b\nc"},
      {"links", "<a href=\"x?a=1&amp;b\">l <b>m</b></a> <a class=k href='y'><img></a>",
       "[l m](x?a=1&b) y"},
      {"inline", "<strong>a</strong><em>b</em><code>c</code><b></b>", "**a***b*`c`****"},
      {"blocks", "<p>a</p><p>b</p><div><section>c</section></div>", "a\n\nb\n\nc"},
      {"unknown tags", "<x-y>a</x-y><> < b", "a<> < b"},
      {"entities", "&amp;lt; &amp;#39; &#20320;&#128512; &#xD7FF; &#55296; &#99999999999; &copy;",
       "< ' 你😀 &#xD7FF; &#55296; &#99999999999; &copy;"},
      {"nothing but a picture", "<img src=x>", "(none)"},
      {"nothing", "", "(none)"},
      {"bytes that are no text", "a\xFF<b>b</b>", "a\uFFFD**b**"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(pasted(c.html), c.expected);
  }
}

// Each .html has its .md beside it. NOMELY_REBASELINE=1 writes those anew.
TEST(ClipboardMarkdownImporterTest, Fragments) {
  int met = 0;
  for (const auto& entry : std::filesystem::directory_iterator(TestPaths::fixtures + "/paste")) {
    if (entry.path().extension() != ".html") continue;
    SCOPED_TRACE(entry.path().filename());
    std::filesystem::path expected = entry.path();
    expected.replace_extension(".md");
    const std::string markdown = pasted(readFile(entry.path())) + "\n";
    if (std::getenv("NOMELY_REBASELINE") != nullptr) writeFile(expected, markdown);
    EXPECT_EQ(markdown, readFile(expected));
    ++met;
  }
  EXPECT_GE(met, 8);
}

struct Clipboard final : Pasteboard {
  [[nodiscard]] bool hasImages() const override { return images; }
  [[nodiscard]] std::optional<std::string> html() const override { return htmlText; }
  [[nodiscard]] std::optional<std::string> richText() const override { return rtf; }

  bool images = false;
  std::optional<std::string> htmlText;
  std::optional<std::string> rtf;
};

TEST(ClipboardMarkdownImporterTest, WhatAPasteDoes) {
  using enum PasteDecision::Action;
  const std::string rtf = "{\\rtf1 *b*\\par }";
  const struct {
    const char* name;
    bool images;
    std::optional<std::string> html;
    std::optional<std::string> rtf;
    PasteDecision expected;
  } cases[] = {
      {"pictures first", true, "<b>a</b>", rtf, {takeImages, ""}},
      {"HTML", false, "<b>a</b>", rtf, {insertText, "**a**"}},
      {"HTML with nothing in it", false, "<img>", rtf, {insertText, "*b*"}},
      {"RTF alone", false, {}, rtf, {insertText, "*b*"}},
      {"RTF with nothing in it", false, {}, "{\\rtf1\\par }", {ordinaryPaste, ""}},
      {"damaged RTF", false, {}, "{\\rtf1 a", {ordinaryPaste, ""}},
      {"neither", false, {}, {}, {ordinaryPaste, ""}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Clipboard clipboard;
    clipboard.images = c.images;
    clipboard.htmlText = c.html;
    clipboard.rtf = c.rtf;
    EXPECT_EQ(decidePaste(clipboard), c.expected);
  }
}

// What takes a backtracking expression hours. The bound is far above what a sanitizer's build needs
// and far below that.
TEST(ClipboardMarkdownImporterTest, HostileTextsTakeLinearTime) {
  constexpr std::size_t size = 1 << 20;
  const auto begin = std::chrono::steady_clock::now();
  constexpr std::string_view pieces =
      "<a¦<a ¦<a href='x'¦<a href='x'>¦href=' ¦<a href=\"¦<pre>¦<pre¦<b><i>¦<script ¦"
      "<h1><h2><h3>¦<table><tr>¦<tr><td>¦<br ¦class='¦class='language-¦<¦<>¦</a¦&#1¦&amp;¦"
      "&#39;¦<li>¦<blockquote>¦\n¦ ¦<div¦<b></b>¦<pre class='language-a'></pre>¦"
      "<table><tr><td></td></tr></table>";
  for (const std::string& piece : piecesOf(pieces))
    (void)ClipboardMarkdownImporter::markdown(filledWith(piece, size) + "</a>");
  // One long row above many short ones: no filling up to tens of thousands of cells each.
  std::string table = "<table><tr>";
  while (table.size() < size / 2) table += "<td></td>";
  while (table.size() < size) table += "</tr><tr><td></td>";
  EXPECT_LT(pasted(table + "</tr></table>").size(), 2 * size);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::minutes(2));
}

}  // namespace
}  // namespace nomely::test
