#include <algorithm>
#include <cstdlib>

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

TEST_F(RenderCommandTest, DrawsWithColour) {
  const std::string text = "**a** <span style=\"color: #010203\">b\x1B[31m</span>";
  const std::string drawn = render(text, {"--color", "always"}).output;
  EXPECT_EQ(drawn, "\x1B[1ma\x1B[0m \x1B[38;2;1;2;3mb\uFFFD[31m\x1B[0m\n");
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

// Each .md has beside it how it is drawn, and its blocks and HTML. NOMELY_REBASELINE=1 writes those
// anew.
TEST_F(RenderCommandTest, WholeTexts) {
  int met = 0;
  for (const auto& entry : fs::directory_iterator(TestPaths::fixtures + "/render")) {
    if (entry.path().extension() != ".md") continue;
    ++met;
    for (const std::string form : {"txt", "json", "blocks", "html"}) {
      SCOPED_TRACE(entry.path().filename().string() + " as " + form);
      fs::path expected = entry.path();
      expected.replace_extension("." + form);
      const std::string option = form == "txt" ? "--color=never" : "--" + form;
      const std::string shown = render(readFile(entry.path()), {option}).output;
      if (std::getenv("NOMELY_REBASELINE") != nullptr) writeFile(expected, shown);
      EXPECT_EQ(shown, readFile(expected));
    }
  }
  EXPECT_EQ(met, 5);
}

using PasteCommandTest = CommandTest;

TEST_F(PasteCommandTest, ClippingsFromFileAndStandardInput) {
  const std::string rtf = "{\\rtf1 b\\par}";
  writeFile(home.path() / "clip", rtf);
  const std::string file = (home.path() / "clip").string();
  const std::tuple<const char*, ProgramCall, int, std::string> cases[] = {
      {"HTML", {.arguments = {"paste"}, .input = "<b>你</b>"}, 0, "**你**\n"},
      {"JSON",
       {.arguments = {"paste", "-", "--json"}, .input = "<i>a</i>"},
       0,
       "{\"markdown\":\"*a*\"}"},
      {"RTF", {.arguments = {"paste", file}}, 0, "b\n"},
      {"nothing in it", {.arguments = {"paste"}, .input = "<img>"}, 1, ""},
      {"damaged", {.arguments = {"paste"}, .input = "{\\rtf1 a"}, 1, ""},
      {"no text", {.arguments = {"paste"}, .input = "\xFF"}, 2, ""},
      {"terminal", {.arguments = {"paste"}, .inputKind = InputKind::terminal}, 2, ""},
      {"no such file", {.arguments = {"paste", file + "x"}}, 4, ""},
  };
  for (const auto& [name, call, status, output] : cases) {
    SCOPED_TRACE(name);
    const ProgramResult result = run(call);
    EXPECT_EQ(result.status, status) << result.errors;
    if (output.starts_with('{'))
      EXPECT_EQ(Json::parse(result.output), Json::parse(output));
    else
      EXPECT_EQ(result.output, output);
  }
}

class ExportCommandTest : public CommandTest {
 protected:
  fs::path file = home.path() / "页.html";
};

TEST_F(ExportCommandTest, PagesOfSelections) {
  (void)add("一 #甲");
  (void)add("二 #乙");
  const Json result = json({"export", "html", "-o", file.string(), "--tag", "乙"});
  EXPECT_EQ(result["file"], file.string());
  EXPECT_EQ(result["memos"], 1);
  EXPECT_EQ(result["bytes"], fs::file_size(file));
  EXPECT_THAT(readFile(file), HasSubstr("<p>二 #乙</p>"));

  const ProgramResult page = run({"export", "html", "-o", "-", "--all"});
  EXPECT_EQ(page.status, 0);
  EXPECT_THAT(page.output, HasSubstr("共 2 条记录"));
  EXPECT_THAT(run({"export", "html", "-o", "-", "--all", "-n", "1"}).output,
              HasSubstr("共 1 条记录"));
  EXPECT_THAT(run({"export", "markdown", "-o", "-", "--tag", "甲"}).output,
              HasSubstr("# 2026年3月1日 周日\n"));
}

TEST_F(ExportCommandTest, FilesThatAreThere) {
  (void)add("一");
  writeFile(file, "mine");
  const std::vector<std::string> call{"export", "html", "-o", file.string(), "--all"};
  EXPECT_EQ(run(call).status, 2);
  EXPECT_EQ(readFile(file), "mine");
  std::vector<std::string> sure = call;
  sure.emplace_back("--yes");
  EXPECT_EQ(run(sure).status, 0);
  EXPECT_THAT(readFile(file), HasSubstr("<p>一</p>"));

  const std::string nowhere = (home.path() / "no" / "x").string();
  expectFailure({"export", "html", "-o", nowhere}, 4, "没有这个文件夹");
}

}  // namespace
}  // namespace nomely::test
