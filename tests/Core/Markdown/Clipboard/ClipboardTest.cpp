#include <cstdlib>

#include "Core/Markdown/Clipboard/ClipboardMarkdownImporter.h"
#include "Core/Markdown/Clipboard/RichTextReader.h"
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
  const std::pair<std::string, std::string> cases[] = {
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
  for (const auto& [html, expected] : cases) EXPECT_EQ(pasted(html), expected) << html;
}

// Each .html has its .md beside it. NOMELY_REBASELINE=1 writes those anew.
TEST(ClipboardMarkdownImporterTest, Fragments) {
  int met = 0;
  for (const auto& entry : fs::directory_iterator(TestPaths::fixtures + "/paste")) {
    if (entry.path().extension() != ".html") continue;
    SCOPED_TRACE(entry.path().filename());
    fs::path expected = entry.path();
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

TEST(RichTextReaderTest, PlainTexts) {
  const std::string fonts =
      R"({\fonttbl{\f0\fswiss Sans;}{\f1\fnil\fcharset134 Song;}{\f2\fcharset204 Sans;}})";
  const std::pair<std::string, std::string> cases[] = {
      {"{\\rtf1\\ansi" + fonts + "\\f0 a\\par\r\nb\\line c\\tab d}\0\0", "a\nb\nc\td"},
      {R"({\rtf1 \{\\\}\~x\_y\-z\emdash\ldblquote q\rdblquote})", "{\\}\u00A0x\u2011yz—“q”"},
      {R"({\rtf1\ansi\ansicpg936 \'c4\'e3\'ba\'c3 a\'b0\'a1})", "你好 a啊"},
      {R"({\rtf1\ansicpg936 \'81A\'81@})", "丄丂"},
      {"{\\rtf1\\ansi" + fonts + R"(\'e9{\f1\'c4\'e3}\f2\'e9\plain\'e9})", "é你йé"},
      {R"({\rtf1 \u20320?\uc2\u22909\'ba\'c3{\uc0\u-10179\u-8704}x})", "你好😀x"},
      {R"({\rtf1\uc3 \u20320?{a}\u20320{b}c})", "你a你bc"},
      {R"({\rtf1 \u8212\emdash\u8212 -.})", "——."},
      {R"({\rtf1 a\u-10179?b})", "a\uFFFDb"},
      {"{\\rtf1{\\colortbl;\\red0;}{\\stylesheet{\\s0 Normal;}}{\\info{\\title t}}"
       "{\\*\\generator g;}{\\pict\\pngblip 89504e}a{\\field{\\*\\fldinst HYPERLINK \"u\"}"
       "{\\fldrslt b}}}",
       "ab"},
      {"{\\rtf1 a{\\pict\\bin3 }}}}b}", "ab"},
      {R"({\rtf1\ansicpg99999999999999999999\u99999999 a\uc-5 b})", "ab"},
  };
  for (const auto& [rtf, expected] : cases)
    EXPECT_EQ(RichTextReader::plainText(rtf), expected) << rtf;
}

TEST(RichTextReaderTest, DamagedTexts) {
  const std::string whole = R"({\rtf1\ansi{\fonttbl{\f0 A;}}\f0 a\'e9\u20320?{\b b}\par})";
  ASSERT_TRUE(RichTextReader::plainText(whole));
  for (std::size_t length = 0; length < whole.size(); ++length)
    EXPECT_FALSE(RichTextReader::plainText(whole.substr(0, length))) << length;
  for (const char* rtf : {"", "plain", "<p>", " {\\rtf1 a}", "{\\rtf1 \\'g0}", "{\\rtf1 \\bin9 a}",
                          "{\\rtf1 \\bin-1 a}"})
    EXPECT_FALSE(RichTextReader::plainText(rtf)) << rtf;
  EXPECT_FALSE(RichTextReader::plainText("{\\rtf1" + std::string(100'000, '{') +
                                         std::string(100'000, '}') + "}"));
}

}  // namespace
}  // namespace nomely::test
