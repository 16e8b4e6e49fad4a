#include "CLI/CommandTest.h"
#include "Platform/Text/Unicode.h"

namespace nomely::test {
namespace {

// The program on a terminal of its own.
class TerminalTest : public CommandTest {
 protected:
  // What a person sees of a run that asks nothing.
  [[nodiscard]] std::string shown(ProgramCall call, TerminalSize size = {}) const {
    const auto run = start(std::move(call), size);
    EXPECT_EQ(run->finish(), 0) << run->screen();
    return run->screen();
  }
  // A program for $PATH or $PAGER.
  std::string script(const std::string& name, const std::string& text) const {
    const fs::path file = home.path() / "bin" / name;
    fs::create_directories(file.parent_path());
    writeFile(file, "#!/bin/sh\n" + text + "\n");
    fs::permissions(file, fs::perms::owner_all);
    return file.string();
  }
};

TEST_F(TerminalTest, APagerGetsColourAndWidthAndNoneIsNoLoss) {
  (void)add("# 标题\n\n---\n\n正文", {"--tag", "读书"});
  const std::string pager = script("pager", "echo \"[$LESS $LESSCHARSET]\"; cat");
  const struct {
    const char* name;
    std::map<std::string, std::string> environment;
    std::vector<std::string> has;
    std::vector<std::string> hasNot;
  } cases[] = {
      {"a pager", {{"PAGER", pager}}, {"[FRX utf-8]", "\x1B[36m#读书"}, {}},
      {"the user's settings", {{"PAGER", pager}, {"LESS", "S"}}, {"[S utf-8]"}, {}},
      {"no less", {{"PATH", "/nonexistent"}}, {"正文", "\x1B[36m#读书"}, {}},
      {"a pager that isn't there", {{"PAGER", "/nonexistent/pager -x"}}, {"正文"}, {}},
      {"no pager wanted", {{"PAGER", ""}}, {"正文"}, {}},
      {"no colour wanted", {{"PAGER", pager}, {"NO_COLOR", "1"}}, {"#读书"}, {"\x1B["}},
      {"a terminal without colours", {{"PAGER", pager}, {"TERM", "dumb"}}, {"#读书"}, {"\x1B["}},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    const std::string list =
        shown({.arguments = {"list", "--all"}, .environment = test.environment});
    for (const std::string& text : test.has) EXPECT_THAT(list, HasSubstr(text));
    for (const std::string& text : test.hasNot) EXPECT_THAT(list, Not(HasSubstr(text)));
  }
  const std::string rule = shown({.arguments = {"show", "@"}, .environment = {{"PAGER", pager}}},
                                 {.columns = 12, .rows = 24});
  EXPECT_THAT(rule, HasSubstr("────────────"));
  EXPECT_THAT(rule, Not(HasSubstr("─────────────")));
  EXPECT_THAT(shown({.arguments = {"list", "--json"}, .environment = {{"PAGER", pager}}}),
              Not(HasSubstr("[FRX")));
}

TEST_F(TerminalTest, QuestionsTakeAYesInAnyFormAndAcknowledgeANo) {
  (void)add("甲");
  const std::pair<std::string, bool> cases[] = {{"YES \r", true}, {" 是\r", true}, {"Y\r", true},
                                                {"yep\r", false}, {"\r", false},   {"\x04", false},
                                                {"\x03", false}};
  for (const auto& [typed, isYes] : cases) {
    SCOPED_TRACE(testing::PrintToString(typed));
    EXPECT_EQ(run({"rm", "@"}).status, 0);
    const auto empty = start({.arguments = {"trash", "empty"}});
    (void)empty->waitFor("[y/N]");
    empty->type(typed);
    const bool isInterrupted = typed == "\x03";
    EXPECT_EQ(empty->finish(), isInterrupted ? 130 : 0);
    EXPECT_EQ(empty->screen().find("已取消") == std::string::npos, isYes || isInterrupted);
    EXPECT_EQ(json({"trash"}).empty(), isYes);
    if (isYes)
      (void)add("甲");
    else
      EXPECT_THAT(run({"trash", "restore", "2026-03-01_001"}).errors, HasSubstr("2026-03-01/1"));
  }
}

TEST_F(TerminalTest, LinesOfHelpFitTheTerminal) {
  for (const unsigned short columns : std::initializer_list<unsigned short>{40, 80, 120})
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"help"}, {"help", "list"}, {"help", "history", "diff"}}) {
      SCOPED_TRACE(testing::PrintToString(arguments) + std::to_string(columns));
      std::string help = shown({.arguments = arguments}, {.columns = columns, .rows = 24});
      for (std::size_t end = help.find("\r\n"); end != std::string::npos; end = help.find("\r\n")) {
        EXPECT_LE(displayWidth(help.substr(0, end)), columns) << help.substr(0, end);
        help.erase(0, end + 2);
      }
    }
}

TEST_F(TerminalTest, WhatADeadEditorLeftIsToldOfAndWhatALiveOneHasIsNot) {
  const std::string editor =
      script("editor", "echo 半句 > \"$1\"; echo begun; read line || exit; echo 整句 > \"$1\"");
  const auto environment = std::map<std::string, std::string>{{"EDITOR", editor}};
  const auto writing = start({.arguments = {"add"}, .environment = environment});
  (void)writing->waitFor("begun");
  EXPECT_EQ(run({"add", "甲"}).errors.find("没有存成笔记"), std::string::npos);
  EXPECT_EQ(json({"doctor"})["drafts"], Json::array());
  writing->type("\r");
  EXPECT_EQ(writing->finish(), 0);
  EXPECT_EQ(json({"show", "@"})["body"], "整句");

  {
    const auto killed = start({.arguments = {"add"}, .environment = environment});
    (void)killed->waitFor("begun");
  }
  EXPECT_THAT(run({"add", "乙"}).errors, HasSubstr("没有存成笔记"));
  const Json drafts = json({"doctor"})["drafts"];
  ASSERT_EQ(drafts.size(), 1U);
  EXPECT_EQ(readFile(std::string(drafts[0])), "半句\n");
}

TEST_F(TerminalTest, OpenHandsTheAttachmentToTheDesktop) {
  writeFile(home.path() / "照 片.png", "picture");
  (void)add("图", {"--attach", (home.path() / "照 片.png").string()});
  const std::string log = (home.path() / "opened").string();
  script("xdg-open", "echo \"$1\" > \"" + log + "\"");
  const auto path = (home.path() / "bin").string() + ":/usr/bin:/bin";
  const ProgramResult opened =
      run({.arguments = {"open", "@", "照 片.png", "--json"}, .environment = {{"PATH", path}}});
  EXPECT_EQ(opened.status, 0) << opened.errors;
  const std::string file = Json::parse(opened.output)["file"];
  EXPECT_EQ(readFile(file), "picture");
  EXPECT_EQ(readFile(log), file + "\n");
  script("xdg-open", "exit 4");
  EXPECT_EQ(run({.arguments = {"open", "@"}, .environment = {{"PATH", path}}}).status, 1);
}

// The editor is a shell script; it is started because standard input is a terminal.
class EditorTest : public TerminalTest {
 protected:
  [[nodiscard]] ProgramResult runWithEditor(std::vector<std::string> arguments,
                                            const std::string& text) const {
    return run({.arguments = std::move(arguments),
                .inputKind = InputKind::terminal,
                .environment = {{"EDITOR", script("editor", text)}}});
  }
  [[nodiscard]] std::string drafts() const {
    const auto folder = home.path() / ".local/state/nomely/editing";
    return fs::exists(folder) ? treeOf(folder) : "";
  }
};

TEST_F(EditorTest, WhatTheEditorSavesBecomesTheMemo) {
  ASSERT_EQ(runWithEditor({"add", "--date", "2026-03-01"}, "echo 写在编辑器里 > \"$1\"").status, 0);
  EXPECT_EQ(json({"show", "2026-03-01/1"})["body"], "写在编辑器里");
  ASSERT_EQ(runWithEditor({"edit", "2026-03-01/1"}, "sed -i s/写/改/ \"$1\"").status, 0);
  EXPECT_EQ(json({"show", "2026-03-01/1"})["body"], "改在编辑器里");
  EXPECT_EQ(drafts(), "");
}

TEST_F(EditorTest, AnEditorThatFailsOrChangesNothingLeavesTheMemoAsItWas) {
  const Json added = add("原文");
  const std::string before = treeOf(root);
  const std::tuple<std::string, std::string, int, bool> cases[] = {
      {"unchanged", "true", 0, false},
      {"touched only", "touch \"$1\"", 0, false},
      {"fails", "exit 3", 1, false},
      {"fails after a change", "echo 半句 > \"$1\"; exit 1", 1, true},
      {"emptied", ": > \"$1\"", 2, false},
      {"not UTF-8", "printf '\\377' > \"$1\"", 2, true},
  };
  for (const auto& [name, script, status, keepsDraft] : cases) {
    SCOPED_TRACE(name);
    const ProgramResult result = runWithEditor({"edit", "2026-03-01/1"}, script);
    EXPECT_EQ(result.status, status) << result.errors;
    EXPECT_EQ(treeOf(root), before);
    EXPECT_EQ(!drafts().empty(), keepsDraft);
    fs::remove_all(home.path() / ".local");
  }
}

TEST_F(EditorTest, AChangeMadeElsewhereMeanwhileIsKeptAndSoIsTheEditedText) {
  const Json added = add("原文");
  const ProgramResult result =
      runWithEditor({"edit", "2026-03-01/1"},
                    TestPaths::nomely +
                        " edit 2026-03-01/1 别处的修改 > /dev/null; echo 编辑器里的修改 > \"$1\"");
  EXPECT_EQ(result.status, 3) << result.errors;
  EXPECT_EQ(json({"show", "2026-03-01/1"})["body"], "别处的修改");
  EXPECT_NE(drafts().find("编辑器里的修改"), std::string::npos);
  EXPECT_NE(result.errors.find("你写的内容保存在"), std::string::npos);
}

TEST_F(EditorTest, WithoutAnEditorTheUserIsToldHowToGiveText) {
  const ProgramResult result =
      run({.arguments = {"add"}, .inputKind = InputKind::terminal, .environment = {{"PATH", "/"}}});
  EXPECT_EQ(result.status, 2);
  EXPECT_NE(result.errors.find("$EDITOR"), std::string::npos);
}

}  // namespace
}  // namespace nomely::test
