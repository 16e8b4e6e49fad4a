#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "CLI/CommandTest.h"

namespace nomely::test {
namespace {

class RenderCommandTest : public CommandTest {
 protected:
  [[nodiscard]] ProgramResult render(const std::string& text,
                                     std::vector<std::string> options = {}) const {
    options.insert(options.begin(), "render");
    return run(ProgramCall{.arguments = std::move(options), .input = text});
  }
};

constexpr auto sample = R"(# 标题 **重**
- 甲
1. 乙
- [x] 丙

短句一 [链接](https://x.org)
短句二

> 引文

> [!TIP]
> 提示

```sh
ls
```
|名|值|
|---|---|
|a|**b**|

---)";

constexpr auto sampleBlocks = R"json([
  {"kind": "heading", "level": 1, "text": "标题 **重**"},
  {"kind": "bulletItem", "text": "甲"},
  {"kind": "numberedItem", "number": "1", "text": "乙"},
  {"kind": "checkItem", "checked": true, "text": "丙"},
  {"kind": "paragraph", "text": "短句一 [链接](https://x.org)"
},
  {"kind": "paragraph", "text": "短句二"},
  {"kind": "blockquote", "text": "引文"},
  {"kind": "callout", "callout": {"kind": "tip", "title": "Tip", "body": "提示"}},
  {"kind": "codeBlock", "code": "ls", "language": "sh"},
  {"kind": "table", "headers": ["名", "值"], "rows": [["a", "**b**"]]},
  {"kind": "horizontalRule"}])json";

TEST_F(RenderCommandTest, DrawsWithoutColour) {
  EXPECT_EQ(render(sample).output,
            "# 标题 重\n\n• 甲\n1. 乙\n☑ 丙\n\n短句一 链接 (https://x.org)\n短句二\n\n│ 引文\n\n"
            "┃ Tip\n┃ 提示\n\n    ls\n\n名 │ 值\n───┼───\na  │ b\n\n"
            "────────────────────────────────────────\n");
}

TEST_F(RenderCommandTest, DrawsWithColour) {
  const std::string text = "**a** <span style=\"color: #010203\">b\x1B[31m</span>";
  const std::string drawn = render(text, {"--color", "always"}).output;
  EXPECT_EQ(drawn, "\x1B[1ma\x1B[0m \x1B[38;2;1;2;3mb\uFFFD[31m\x1B[0m\n");
}

TEST_F(RenderCommandTest, GivesBlocks) {
  EXPECT_EQ(Json::parse(render(sample, {"--json"}).output), Json::parse(sampleBlocks));
  EXPECT_EQ(render("", {"--json"}).output, "[]\n");
  EXPECT_EQ(render("> a\n> b\n# c", {"--blocks"}).output,
            "blockquote\n  text: a\n    b\nheading\n  level: 1\n  text: c\n");
}

TEST_F(RenderCommandTest, BreaksWideTables) {
  const std::string cell(100, 'x');
  const std::string drawn = render("|a|b|\n|---|---|\n|" + cell + "|" + cell + "|").output;
  for (std::size_t begin = 0; begin < drawn.size();) {
    const std::size_t end = drawn.find('\n', begin);
    EXPECT_LE(drawn.find('x', begin) < end ? end - begin : 0, 82U) << "a bar has three bytes";
    begin = end + 1;
  }
  EXPECT_EQ(static_cast<std::size_t>(std::count(drawn.begin(), drawn.end(), 'x')), 200U);
}

TEST_F(RenderCommandTest, PreviewAndFiles) {
  writeFile(home.path() / "a.md", "1\n2\n3\n4\n5\n6\n7\n");
  writeFile(home.path() / "b.md", "\xFF");
  const auto path = [&](const char* name) { return (home.path() / name).string(); };
  EXPECT_EQ(run({"render", path("a.md"), "--preview"}).output, "1\n2\n3\n4\n5\n6...\n");
  EXPECT_EQ(json({"render", path("a.md"), "--preview"})["preview"], "1\n2\n3\n4\n5\n6...");
  EXPECT_EQ(run({"render", path("b.md")}).status, 2);
  EXPECT_EQ(run({"render", path("c.md")}).status, 4);
  EXPECT_EQ(run({"render", path("a.md"), "--preview", "--blocks"}).status, 2);
}

TEST_F(RenderCommandTest, ShowDrawsTheBody) {
  EXPECT_EQ(add("- [ ] **买** 菜")["seqNumber"], 1);
  EXPECT_NE(run({"show", "2026-03-01/1"}).output.find("\n☐ 买 菜\n"), std::string::npos);
}

// Each .md has its blocks and its HTML beside it. NOMELY_REBASELINE=1 writes those anew.
TEST_F(RenderCommandTest, WholeTexts) {
  int met = 0;
  for (const auto& entry : std::filesystem::directory_iterator(TestPaths::fixtures + "/render")) {
    if (entry.path().extension() != ".md") continue;
    ++met;
    for (const std::string form : {"blocks", "html"}) {
      SCOPED_TRACE(entry.path().filename().string() + " as " + form);
      std::filesystem::path expected = entry.path();
      expected.replace_extension("." + form);
      const std::string shown = render(readFile(entry.path()), {"--" + form}).output;
      if (std::getenv("NOMELY_REBASELINE") != nullptr) writeFile(expected, shown);
      EXPECT_EQ(shown, readFile(expected));
    }
  }
  EXPECT_EQ(met, 3);
}

}  // namespace
}  // namespace nomely::test
