#include "Export/HTMLExporter.h"
#include "Export/InlineHTML.h"
#include "Export/MarkdownHTML.h"
#include "Platform/Text/Base64.h"
#include "Support/RandomText.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

TEST(MarkdownHTMLTest, ADiagramWithAPictureTakesItsCodesPlace) {
  const DiagramElement draw = [](const std::string& code) {
    return code == "a\nb" ? HTMLExporter::pictureElement("png", 299.6, code + "\"") : "";
  };
  EXPECT_EQ(markdownToHTML("``` Mermaid \na\nb\n```\n```js\na\nb\n```\n```mermaid\nbad",
                           RenderMode::plain, draw),
            "<img src=\"data:image/png;base64,cG5n\" style=\"width:300px;max-width:100%\" "
            "alt=\"a\nb&quot;\">\n"
            "<pre><code>a\nb</code></pre>\n<pre><code>bad</code></pre>");
}

TEST(MarkdownHTMLTest, StyledIsPlainWithStyles) {
  const std::string text = "## a\n- b\n> c\n\n1. d\n\n`e`\na|b\n---|---\n1|2";
  const RegularExpression styles(R"( style="[^"]+"|<div style=[^>]*>\n|\n</div>)");
  const std::string styled = markdownToHTML(text, RenderMode::styled);
  EXPECT_EQ(toUtf8(styles.replacingMatches(toUtf16(styled), u"")),
            markdownToHTML(text, RenderMode::plain));
  EXPECT_THAT(styled, HasSubstr("<h2 style=\"color:#ffffff;font-size:28px;"));
}

TEST(InlineHTMLTest, IsThatOfTheExpressions) {
  const std::pair<RegularExpression, std::u16string_view> rules[] = {
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

class HTMLExporterTest : public StoreTest {
 protected:
  // A memo of 2026-03-01 with the files that `names` says, the bytes of each its own name.
  [[nodiscard]] Memo memoWith(const std::string& body, const std::vector<std::string>& names) {
    for (const std::string& name : names) writeFile(context.paths.dayFolder(date) / name, name);
    Memo memo;
    memo.time = "09:30";
    memo.body = body;
    memo.attachments = names;
    return memo;
  }

  static std::string image(const std::string& type, const std::string& bytes) {
    return "<img src=\"data:image/" + type + ";base64," + encodeBase64(bytes) + "\" alt=\"" +
           bytes + "\">";
  }

  const Day date = day("2026-03-01");
  AttachmentManager attachments{context};
};

TEST_F(HTMLExporterTest, BlockOfAPage) {
  Memo memo = memoWith("**a**", {"1.JPG", "2.heic", "voice.m4a", "3.webp"});
  memo.attachments.insert(memo.attachments.begin(), {"gone.png", "../../secret.png"});
  memo.time = "<b>\"";
  EXPECT_EQ(HTMLExporter::exportMemoFlomo(memo, date, attachments),
            "<div class=\"memo\">\n  <div class=\"time\">2026-03-01 &lt;b&gt;\"</div>\n"
            "  <div class=\"content\"><p><strong>a</strong></p></div>\n  <div class=\"files\">\n" +
                image("jpeg", "1.JPG") + image("heic", "2.heic") + image("webp", "3.webp") +
                "  </div>\n</div>");
}

TEST_F(HTMLExporterTest, FragmentWithTags) {
  Memo memo = memoWith("a", {"x\"<&>.png"});
  memo.tags = {"读书/<i>", "_imported", "b"};
  EXPECT_EQ(HTMLExporter::exportMemo(memo, date, attachments),
            "<div class=\"memo\">\n    <div class=\"time\">2026-03-01 09:30</div>\n"
            "    <div class=\"body\"><p>a</p></div>\n    <div class=\"images\">"
            "<img src=\"data:image/png;base64," +
                encodeBase64("x\"<&>.png") +
                "\" alt=\"x&quot;&lt;&amp;&gt;.png\"></div>\n    <div class=\"tags\">"
                "<span class=\"tag\">#读书/&lt;i&gt;</span><span class=\"tag\">#b</span></div>\n"
                "</div>");
  memo = memoWith("", {});
  memo.tags = {"_imported"};
  EXPECT_THAT(HTMLExporter::exportMemo(memo, date, attachments), Not(HasSubstr("tags")));
}

TEST_F(HTMLExporterTest, WholePages) {
  const auto entry = [&](Memo memo) {
    return MemoEntry{date, std::make_shared<const Memo>(std::move(memo))};
  };
  const std::string empty = HTMLExporter::exportMemosFlomo({}, attachments, clock);
  EXPECT_THAT(empty, StartsWith("<!DOCTYPE html>\n<html lang=\"zh-CN\">\n<head>\n"));
  EXPECT_THAT(empty, EndsWith("<div class=\"date\">共 0 条记录 · 生成于 2026.3.1 9:30</div>\n"
                              "</header>\n<div class=\"memos\">\n\n</div>\n</body>\n</html>"));

  // A picture longer than the pieces in which it is written.
  Memo large = memoWith("b", {"large.png"});
  const std::string bytes(500'000, '\x5A');
  writeFile(context.paths.dayFolder(date) / "large.png", bytes);
  const Memo small = memoWith("a", {});
  const std::string page =
      HTMLExporter::exportMemosFlomo({entry(small), entry(large)}, attachments, clock);
  EXPECT_THAT(page, HasSubstr("共 2 条记录"));
  EXPECT_THAT(page, EndsWith("<div class=\"memos\">\n" +
                             HTMLExporter::exportMemoFlomo(small, date, attachments) + "\n" +
                             HTMLExporter::exportMemoFlomo(large, date, attachments) +
                             "\n</div>\n</body>\n</html>"));
  EXPECT_THAT(page, HasSubstr(";base64," + encodeBase64(bytes) + "\""));
}

}  // namespace
}  // namespace nomely::test
