#include <cstdlib>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Core/Markdown/Clipboard/ClipboardMarkdownImporter.h"
#include "Support/Proportion.h"
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
    std::string html;
    std::string expected;
  } cases[] = {
      {"x<!--StartFragment--><b>a</b><!--EndFragment-->y", "**a**"},
      {"x<!--EndFragment-->a<!--StartFragment-->y", "xay"},
      {"<title>t</title><BODY class=x>a</Body>b", "a"},
      {"<title>t</title><body>a", "a"},
      {"\uFEFFa\r\nb\rc&#13;d", "a\nb\nc\nd"},
      {"a<script>if (x<y) z()</SCRIPT><style>p{}</style>b", "ab"},
      {"<pre><code class=\"hl language-c++\">\n a&lt;b\n\n\nc</code></pre>",
       "```c++\na<b\n\nc\n```"},
      {"<pre>&lt;b>&amp;amp;lt;</pre><table><tr><td>&lt;td&gt;</td></tr></table><p>",
       "```\n<b>&amp;lt;\n```\n\n| <td> |\n| --- |"},
      {"<h2>a &lt; b</h2><li>vector&lt;int&gt; &#60;<a href='x?a&lt;b'>p &lt;q&gt;</a></li>"
       "<a href='x?a&lt;b&amp;amp;c'>p &amp;lt;q&gt;</a><b>&lt;b&gt;</b><em>1 &lt; 2</em>"
       "<code>map&lt;k,v&gt;</code><blockquote>a &lt; b</blockquote><p>&lt;p></p>",
       "## a < b\n\n- vector<int> <p <q>[p <q>](x?a<b&c)**<b>***1 < 2*`map<k,v>`\n> a < b\n\n<p>"},
      {"<table><tr><th>a<br>b</th></tr><tr></tr><tr><td>c|d<td>e</td></tr></table>",
       "| a b |\n| --- |\n| c\\|de |"},
      {"<table><tr><td>a</td></tr><tr><td>b</td><td>c</td></tr></table>",
       "| a |  |\n| --- | --- |\n| b | c |"},
      {"a<table><caption>x</caption></table>b", "ab"},
      {"<h1>a</h1><h6 id=x>b<br><i>c</i></h6><h2></h2><h3>x</h4>", "# a\n\n###### b\nc\n\n##\nx"},
      {"a<hr/>b<br>c<br />d", "a\n---\nb\nc\nd"},
      {"<blockquote><p>a</p>\n\n\n b</blockquote>c", "> a\n>\n> b\nc"},
      {"<ol><li>a</li><li><b>b</b><br>c</li></ol>", "- a\n- b\nc"},
      {"<a href=\"x?a=1&amp;b\">l <b>m</b></a> <a class=k href='y'><img></a>", "[l m](x?a=1&b) y"},
      {"<strong>a</strong><em>b</em><code>c</code><b></b>", "**a***b*`c`****"},
      {"<p>a</p><p>b</p><div><section>c</section></div>", "a\n\nb\n\nc"},
      {"<x-y>a</x-y><> < b", "a<> < b"},
      {"&amp;lt; &amp;#39; &#20320;&#128512; &#xD7FF; &#55296; &#99999999999; &copy;",
       "< ' 你😀 &#xD7FF; &#55296; &#99999999999; &copy;"},
      {"<img src=x>", "(none)"},
      {"", "(none)"},
      {"a\xFF<b>b</b>", "a\uFFFD**b**"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.html);
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
  using Text = std::optional<std::string>;
  const std::string rtf = "{\\rtf1 *b*\\par }";
  for (const auto& [images, html, richText, expected] :
       {std::tuple(true, Text("<b>a</b>"), Text(rtf), PasteDecision{takeImages, ""}),
        {false, "<b>a</b>", rtf, {insertText, "**a**"}},
        {false, "<img>", rtf, {insertText, "*b*"}},
        {false, {}, rtf, {insertText, "*b*"}},
        {false, {}, "{\\rtf1\\par }", {ordinaryPaste, ""}},
        {false, {}, "{\\rtf1 a", {ordinaryPaste, ""}},
        {false, {}, {}, {ordinaryPaste, ""}}}) {
    Clipboard clipboard;
    clipboard.images = images;
    clipboard.htmlText = html;
    clipboard.rtf = richText;
    EXPECT_EQ(decidePaste(clipboard), expected);
  }
}

// What takes a backtracking expression hours.
TEST(ClipboardMarkdownImporterTest, HostileTextsTakeLinearTime) {
  constexpr std::size_t size = 1U << 16U;
  constexpr std::string_view pieces =
      "<a¦<a ¦<a href='x'¦<a href='x'>¦href=' ¦<a href=\"¦<pre>¦<pre¦<b><i>¦<script ¦"
      "<h1><h2><h3>¦<table><tr>¦<tr><td>¦<br ¦class='¦class='language-¦<¦<>¦</a¦&#1¦&amp;¦"
      "&#39;¦<li>¦<blockquote>¦\n¦ ¦<div¦<b></b>¦<pre class='language-a'></pre>¦"
      "<table><tr><td></td></tr></table>";
  for (const std::string& piece : piecesOf(pieces)) {
    SCOPED_TRACE(piece);
    expectProportional(size, [&](std::size_t amount) {
      (void)ClipboardMarkdownImporter::markdown(filledWith(piece, amount) + "</a>");
    });
  }
  // One long row above many short ones: no filling up to tens of thousands of cells each.
  const std::string table = "<table><tr>" + filledWith("<td></td>", size) +
                            filledWith("</tr><tr><td></td>", size) + "</tr></table>";
  EXPECT_LT(pasted(table).size(), 4 * size);
}

}  // namespace
}  // namespace nomely::test
