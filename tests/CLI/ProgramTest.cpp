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
  EXPECT_TRUE(std::filesystem::exists(given));
  EXPECT_FALSE(std::filesystem::exists(root));
  const ProgramResult usual =
      runProgram(TestPaths::nomely, home.path(), {.arguments = {"add", "y"}});
  EXPECT_EQ(usual.status, 0) << usual.errors;
  EXPECT_TRUE(std::filesystem::exists(home.path() / "NomelyData"));
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

TEST_F(ProgramTest, TextCannotDriveTheTerminal) {
  const Json added = add("红色\x1B[31m\u009B31m结束\tTab");
  const ProgramResult result = run({"show", "2026-03-01/1"});
  EXPECT_EQ(result.output.find('\x1B'), std::string::npos);
  EXPECT_EQ(result.output.find("\xC2\x9B"), std::string::npos);
  EXPECT_NE(result.output.find("结束\tTab"), std::string::npos);
  EXPECT_EQ(json({"show", "2026-03-01/1"}), added) << "JSON has the text as it is";
}

TEST_F(ProgramTest, ColourFollowsTheOptionAndNoColor) {
  const Json added = add("x");
  EXPECT_EQ(run({"list", "--day", "2026-03-01"}).output.find('\x1B'), std::string::npos);
  EXPECT_NE(run({"list", "--day", "2026-03-01", "--color", "always"}).output.find('\x1B'),
            std::string::npos);
}

TEST_F(ProgramTest, HelpManualAndCompletionKnowEveryCommand) {
  const std::string help = run({"help"}).output;
  const std::string manual = run({"manual"}).output;
  for (const char* command :
       {"add", "list", "show", "edit", "set", "move", "attach", "detach", "doctor", "completion"}) {
    SCOPED_TRACE(command);
    EXPECT_NE(help.find(std::string("\n  ") + command + " "), std::string::npos);
    EXPECT_NE(manual.find(std::string(".SS ") + command + "\n"), std::string::npos);
    const ProgramResult own = run({"help", command});
    EXPECT_EQ(own.status, 0);
    EXPECT_EQ(own.output, run({command, "--help"}).output);
    for (const char* shellName : {"bash", "zsh", "fish"})
      EXPECT_NE(run({"completion", shellName}).output.find(command), std::string::npos);
  }
  EXPECT_EQ(shell("\"$NOMELY\" completion bash | bash -n").status, 0);
  EXPECT_EQ(shell("cd \"$HOME\"; \"$NOMELY\" completion bash > c.bash; "
                  "bash -c '. ./c.bash; COMP_WORDS=(nomely ed); COMP_CWORD=1; _nomely; "
                  "echo ${COMPREPLY[@]}'; rm -f c.bash")
                .output,
            "edit\n");
}

}  // namespace
}  // namespace nomely::test
