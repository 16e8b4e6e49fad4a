#include <regex>

#include "CLI/CommandTest.h"

namespace nomely::test {
namespace {

// Presses Tab in real shells. Their `nomely` completes as the real one does, and shows the words
// with which it was run instead of doing anything.
class CompletionTest : public CommandTest, public testing::WithParamInterface<const char*> {
 protected:
  CompletionTest() {
    const std::string folder = home.path().string();
    writeFile(folder + "/bin/nomely",
              "#!/bin/sh\ncase $1 in comple*) exec '" + TestPaths::nomely +
                  "' \"$@\" ;; esac\nprintf '\\n=>'; printf '<%s>' \"$@\"; echo '<='\n");
    fs::permissions(folder + "/bin/nomely", fs::perms::owner_all);
    writeFile(folder + "/照片 一'.jpg", "x");
    writeFile(folder + "/会议 纪要.pdf", "x");
    fs::create_directory(folder + "/空的 夹");
    (void)add("第一条 #读书", {"--tag", "工作/周 会$"});
    (void)add("第二条");
    (void)json({"add", "旧的", "--date", "2025-12-31", "--attach", folder + "/会议 纪要.pdf"});
    (void)json({"add", "丢掉", "--date", "2024-01-01"});
    (void)json({"rm", "2024-01-01/1"});
    (void)json({"add", "别处 #别处", "--root", folder + "/另一本"});
    before = treeOf(root);
  }

  // A shell that is ready, in the home folder.
  [[nodiscard]] std::unique_ptr<TerminalRun> start() const {
    const std::string name = GetParam();
    const bool isFish = name == "fish";
    ProgramCall call{.arguments = {isFish          ? "--no-config"
                                   : name == "zsh" ? "-f"
                                                   : "--norc",
                                   "-i"},
                     .environment = {{"NOMELY_ROOT", root.string()},
                                     {"LC_ALL", "C.UTF-8"},
                                     {"PATH", home.path().string() + "/bin:/usr/bin:/bin"}}};
    if (name == "bash") call.arguments.insert(call.arguments.begin(), "--noprofile");
    auto shell = std::make_unique<TerminalRun>("/usr/bin/" + name, home.path(), call,
                                               TerminalSize{.columns = 200, .rows = 50});
    if (name == "zsh") shell->type("autoload -Uz compinit; compinit -u -D\r");
    shell->type(isFish ? "nomely completion fish | source\r"
                       : "source <(nomely completion " + name + ")\r");
    shell->type("cd; nomely ready\r");
    shell->waitFor("=><ready><=");
    return shell;
  }

  std::string before;
};

TEST_P(CompletionTest, LinesAfterTab) {
  const struct {
    const char* typed;
    const char* words;  // with which the line then runs
  } cases[] = {
      {"appe\t", "<append>"},
      {"--no-i\ttras\tem\t", "<--no-input><trash><empty>"},
      {"list --onel\t--unt\t", "<list><--oneline><--untagged>"},
      {"history 2025-12-31/1 orig\t", "<history><2025-12-31/1><original>"},
      {"help hist\trest\t", "<help><history><restore>"},
      {"--color ne\tlist", "<--color><never><list>"},
      {"search -- --js\t", "<search><--><--js>"},
      {"list --tag 工\t", "<list><--tag><工作/周 会$>"},
      {"list --tag=工\t", "<list><--tag=工作/周 会$>"},
      {"list --tag \"工\t", "<list><--tag><工作/周 会$>"},
      {"list --tag '工作/周 \t", "<list><--tag><工作/周 会$>"},
      {"list --tag 工作/周\\ \t", "<list><--tag><工作/周 会$>"},
      {"list --tag 没有\t", "<list><--tag><没有>"},
      {"--root 另\t list --tag 别\t", "<--root><另一本><list><--tag><别处>"},
      {"--root=$HOME/另一本 list --tag 别\t", "<--root=~/另一本><list><--tag><别处>"},
      {"--root ~/另一本 list --tag 别\t", "<--root><~/另一本><list><--tag><别处>"},
      {"--root ~/没有 list --tag 别\t", "<--root><~/没有><list><--tag><别>"},
      {"list --day yes\t", "<list><--day><yesterday>"},
      {"list --from 2026-0\t--to 昨\t", "<list><--from><2026-03-01><--to><昨天>"},
      {"month 2025\t", "<month><2025-12>"},
      {"show 2025\t", "<show><2025-12-31/1>"},
      {"show 2026-\t", "<show><2026-03-01>"},
      {"rm @2\t", "<rm><@2>"},
      {"detach 2025-12-31/1 会\t", "<detach><2025-12-31/1><会议 纪要.pdf>"},
      {"open @3 \t", "<open><@3><会议 纪要.pdf>"},
      {"trash restore 2\t", "<trash><restore><2024-01-01_001>"},
      {"config set ai.pro\tdeep\t", "<config><set><ai.provider><deepseek>"},
      {"secret set fei\t", "<secret><set><feishu>"},
      {"attach @ 照\t", "<attach><@><照片 一'.jpg>"},
      {"attach @ \"照\t", "<attach><@><照片 一'.jpg>"},
      {"add x --attach=照\t", "<add><x><--attach=照片 一'.jpg>"},
      {"add x --tag 读\t--attach 会\t", "<add><x><--tag><读书><--attach><会议 纪要.pdf>"},
  };
  const auto shell = start();
  for (const auto& test : cases) {
    SCOPED_TRACE(test.typed);
    shell->type(std::string("nomely ") + test.typed + "\r");
    (void)shell->waitFor("=>");
    std::string words = shell->waitFor("<=");
    words.resize(words.size() - 2);
    // Zsh takes the slash of a folder away where a blank follows.
    words = std::regex_replace(words, std::regex("/>"), ">");
    std::string expected = test.words;
    if (const auto tilde = expected.find("~/"); tilde != std::string::npos)
      expected.replace(tilde, 1, home.path().string());
    EXPECT_EQ(words, expected);
  }
  EXPECT_EQ(treeOf(root), before) << "something was written";
  EXPECT_FALSE(fs::exists(home.path() / "没有"));
}

// Zsh and fish show what a candidate is.
TEST_P(CompletionTest, ListsOfCandidates) {
  const auto shell = start();
  const bool isBash = GetParam() == std::string("bash");
  shell->type("nomely show \t\t");
  EXPECT_NE(shell->waitFor("2026-03-01/2").find(isBash ? "@" : "第二条"), std::string::npos);
  shell->waitFor(isBash ? "2025-12-31/1" : "第一条");
}

INSTANTIATE_TEST_SUITE_P(Shells, CompletionTest, testing::Values("bash", "zsh", "fish"),
                         [](const auto& shell) { return std::string(shell.param); });

}  // namespace
}  // namespace nomely::test
