#include "CLI/CommandTest.h"

namespace nomely::test {
namespace {

// The editor is a shell script; it is started because standard input is a terminal.
class EditorTest : public CommandTest {
 protected:
  [[nodiscard]] ProgramResult runWithEditor(std::vector<std::string> arguments,
                                            const std::string& script) const {
    const std::filesystem::path editor = home.path() / "editor";
    writeFile(editor, "#!/bin/sh\n" + script + "\n");
    std::filesystem::permissions(editor, std::filesystem::perms::owner_all);
    return run({.arguments = std::move(arguments),
                .inputKind = InputKind::terminal,
                .environment = {{"EDITOR", editor.string()}}});
  }

  [[nodiscard]] std::string drafts() const {
    const auto folder = home.path() / ".local/state/nomely/editing";
    return std::filesystem::exists(folder) ? treeOf(folder) : "";
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
  struct Case {
    std::string name;
    std::string script;
    int status;
    bool keepsDraft;
  };
  const std::vector<Case> cases{
      {"unchanged", "true", 0, false},
      {"touched only", "touch \"$1\"", 0, false},
      {"fails", "exit 3", 1, false},
      {"fails after a change", "echo 半句 > \"$1\"; exit 1", 1, true},
      {"emptied", ": > \"$1\"", 2, false},
      {"not UTF-8", "printf '\\377' > \"$1\"", 2, true},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.name);
    const ProgramResult result = runWithEditor({"edit", "2026-03-01/1"}, test.script);
    EXPECT_EQ(result.status, test.status) << result.errors;
    EXPECT_EQ(treeOf(root), before);
    EXPECT_EQ(!drafts().empty(), test.keepsDraft);
    std::filesystem::remove_all(home.path() / ".local");
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
