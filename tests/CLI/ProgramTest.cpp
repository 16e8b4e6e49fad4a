#include "CLI/CommandTest.h"

namespace nomely::test {
namespace {

class ProgramTest : public CommandTest {
 protected:
  [[nodiscard]] ProgramResult shell(const std::string& script) const {
    return runProgram(
        "/bin/sh", home.path(),
        {.arguments = {"-c", script},
         .environment = {{"NOMELY_ROOT", root.string()}, {"NOMELY", TestPaths::nomely}}});
  }
};

TEST_F(ProgramTest, WithoutACommandItShowsTodayAndHelpsANewUser) {
  const ProgramResult empty = run(std::vector<std::string>{});
  EXPECT_EQ(empty.status, 0);
  EXPECT_NE(empty.errors.find("nomely add"), std::string::npos);
  EXPECT_EQ(json({}), Json::array());
  EXPECT_EQ(json({"add", "今天的一条"})["seqNumber"], 1);
  EXPECT_EQ(json({})[0]["body"], "今天的一条");
}

TEST_F(ProgramTest, RootIsChosenByOptionThenVariableThenHome) {
  const std::string given = (home.path() / "given").string();
  EXPECT_EQ(json({"add", "x", "--root", given})["seqNumber"], 1);
  EXPECT_TRUE(fs::exists(given));
  EXPECT_FALSE(fs::exists(root));
  const ProgramResult empty = runProgram(TestPaths::nomely, home.path(), {.arguments = {"list"}});
  EXPECT_NE(empty.errors.find("数据目录不存在"), std::string::npos) << empty.errors;
  EXPECT_FALSE(fs::exists(home.path() / "NomelyData"));
  const ProgramResult usual =
      runProgram(TestPaths::nomely, home.path(), {.arguments = {"add", "y"}});
  EXPECT_EQ(usual.status, 0) << usual.errors;
  EXPECT_NE(usual.errors.find("新建了数据目录"), std::string::npos) << usual.errors;
  EXPECT_EQ(fs::status(home.path() / "NomelyData").permissions(), fs::perms::owner_all);
}

TEST_F(ProgramTest, WhatARestoreLeftBesideAMissingRootIsToldOf) {
  writeFile(home.path() / ".nomely-rescue-it's/2026-03-01/001.md", "---\n---\n\nx\n");
  using Words = std::vector<std::string>;
  for (const Words& words : {Words{"add", "x"}, Words{"list"}, Words{"run"}, Words{"config"}})
    expectFailure(
        words, 1,
        "mv -T -- '" + (home.path() / ".nomely-rescue-it'\\''s' '").string() + root.string());
  EXPECT_FALSE(fs::exists(root));
  const ProgramResult told = run({"doctor"});
  EXPECT_EQ(told.status, 0);
  EXPECT_THAT(told.errors, HasSubstr("mv -T"));
}

TEST_F(ProgramTest, AReaderThatLeavesEndsItQuietly) {
  for (int i = 0; i < 20; ++i) EXPECT_EQ(add(std::string(20000, 'x'))["seqNumber"], i + 1);
  const ProgramResult result = shell("\"$NOMELY\" list --all | head -c 10; echo done");
  EXPECT_NE(result.output.find("done"), std::string::npos);
  EXPECT_EQ(result.errors, "");
}

TEST_F(ProgramTest, OutputThatCannotBeWrittenIsAFailure) {
  const Json added = add("x");
  const ProgramResult result = shell("\"$NOMELY\" list --day 2026-03-01 > /dev/full");
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.errors.find("磁盘空间不足"), std::string::npos) << result.errors;
}

// While another process holds the root, renaming a tag waits before its first memo.
TEST_F(ProgramTest, AnInterruptEndsLongWorkBetweenTwoMemos) {
  const struct {
    const char* name;
    const char* then;  // after the first interrupt has been taken
    Json tags;         // of both memos
  } cases[] = {
      {"at the second interrupt at once", "kill -INT $pid; wait $pid; echo $?", {"甲", "甲"}},
      {"after the memo at hand", "flock -u 9; wait $pid; echo $?", {"甲", "乙"}},
  };
  EXPECT_EQ(add("一", {"--tag", "甲"})["seqNumber"], 1);
  EXPECT_EQ(add("二", {"--tag", "甲"})["seqNumber"], 2);
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    const ProgramResult result = shell(
        "until_true() { for i in $(seq 3000); do \"$@\" && return; sleep 0.01; done; exit 9; }\n"
        "waits() { grep -q -e \"-> FLOCK .* $pid \" /proc/locks; }\n"
        "threads() { ls /proc/$pid/task | wc -l; }\n"
        "took_it() { [ $(threads) -lt $before ]; }\n"
        "exec 9< \"$NOMELY_ROOT\"; flock 9\n"
        "\"$NOMELY\" tags rename 甲 乙 -y & pid=$!\n"
        "until_true waits; before=$(threads); kill -INT $pid; until_true took_it\n" +
        std::string(test.then));
    EXPECT_EQ(result.output, "130\n") << result.errors;
    std::vector<std::string> tags;
    for (const Json& memo : json({"list", "--day", "2026-03-01"})) tags.push_back(memo["tags"][0]);
    EXPECT_THAT(tags, testing::UnorderedElementsAreArray(test.tags));
    EXPECT_EQ(treeOf(root).find(".nomely-"), std::string::npos) << "a temporary is left";
  }
}

TEST_F(ProgramTest, OnlyColourThatIsAskedForDrivesTheTerminal) {
  const Json added = add("红色\x1B[31m\u009B31m结束\tTab");
  const ProgramResult result = run({"show", "2026-03-01/1"});
  EXPECT_EQ(result.output.find('\x1B'), std::string::npos);
  EXPECT_EQ(result.output.find("\xC2\x9B"), std::string::npos);
  EXPECT_NE(result.output.find("结束\tTab"), std::string::npos);
  EXPECT_NE(run({"show", "2026-03-01/1", "--color", "always"}).output.find("\x1B["),
            std::string::npos);
  EXPECT_EQ(json({"show", "2026-03-01/1"}), added) << "JSON has the text as it is";
}

TEST_F(ProgramTest, HelpAndManualKnowEveryCommand) {
  const std::string help = run({"help"}).output;
  const std::string manual = run({"manual"}).output;
  for (const char* command : {"add", "trash", "doctor", "completion"}) {
    SCOPED_TRACE(command);
    EXPECT_NE(help.find(std::string("\n  ") + command + " "), std::string::npos);
    EXPECT_NE(manual.find(std::string(".SS ") + command + "\n"), std::string::npos);
    const ProgramResult own = run({"help", command});
    EXPECT_EQ(own.status, 0);
    EXPECT_EQ(own.output, run({command, "--help"}).output);
  }
  EXPECT_NE(manual.find(".B nomely history REF restore N\n"), std::string::npos);
  EXPECT_NE(run({"help", "history", "show"}).output.find("用法：nomely history REF show N"),
            std::string::npos);
}

}  // namespace
}  // namespace nomely::test
