#include <gmock/gmock.h>

#include "CLI/CommandTest.h"
#include "Platform/Text/Unicode.h"

namespace nomely::test {
namespace {

using testing::HasSubstr;
using testing::Not;

// The program on a terminal of its own.
class TerminalTest : public CommandTest {
 protected:
  [[nodiscard]] std::unique_ptr<TerminalRun> start(ProgramCall call, TerminalSize size = {}) const {
    call.environment.emplace("NOMELY_ROOT", root.string());
    return std::make_unique<TerminalRun>(TestPaths::nomely, home.path(), std::move(call), size);
  }
  // What a person sees of a run that asks nothing.
  [[nodiscard]] std::string shown(ProgramCall call, TerminalSize size = {}) const {
    const auto run = start(std::move(call), size);
    EXPECT_EQ(run->finish(), 0) << run->screen();
    return run->screen();
  }
  // A program for $PATH or $PAGER.
  std::string script(const std::string& name, const std::string& text) const {
    const std::filesystem::path file = home.path() / "bin" / name;
    std::filesystem::create_directories(file.parent_path());
    writeFile(file, "#!/bin/sh\n" + text + "\n");
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
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
  const struct {
    const char* typed;
    bool isYes;
  } cases[] = {{"YES \r", true}, {" 是\r", true}, {"Y\r", true},
               {"yep\r", false}, {"\r", false},   {"\x04", false}};
  for (const auto& test : cases) {
    SCOPED_TRACE(testing::PrintToString(test.typed));
    EXPECT_EQ(run({"rm", "@"}).status, 0);
    const auto empty = start({.arguments = {"trash", "empty"}});
    (void)empty->waitFor("[y/N]");
    empty->type(test.typed);
    EXPECT_EQ(empty->finish(), 0);
    EXPECT_EQ(empty->screen().find("已取消") == std::string::npos, test.isYes);
    EXPECT_EQ(json({"trash"}).empty(), test.isYes);
    if (test.isYes)
      (void)add("甲");
    else
      EXPECT_THAT(run({"trash", "restore", "2026-03-01_001"}).errors, HasSubstr("2026-03-01/1"));
  }
}

TEST_F(TerminalTest, CtrlCEndsAQuestionWithStatus130AndChangesNothing) {
  (void)add("甲");
  EXPECT_EQ(run({"rm", "@"}).status, 0);
  const auto empty = start({.arguments = {"trash", "empty"}});
  (void)empty->waitFor("[y/N]");
  empty->type("\x03");
  EXPECT_EQ(empty->finish(), 130);
  EXPECT_EQ(json({"trash"}).size(), 1U);
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

}  // namespace
}  // namespace nomely::test
