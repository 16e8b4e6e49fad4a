#include <gmock/gmock.h>

#include "Export/HTMLExporter.h"
#include "Platform/Text/Base64.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

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
