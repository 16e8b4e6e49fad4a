#include "CLI/CommandTest.h"

namespace nomely::test {
namespace {

TEST_F(CommandTest, ImportsAskAndAreTakenBack) {
  const fs::path page = home.path() / "flomo.html";
  writeFile(page,
            "<div class=\"memo\"><div class=\"time\">2026-03-01 21:30</div>"
            "<div class=\"content\">晚上好 #随笔</div><img src=\"a.jpg\"></div>");
  const std::vector<std::string> call{"import", "flomo", page};
  expectFailure({"import", "flomo", home.path() / "none.zip"}, 4, "none.zip");
  expectFailure(call, 2, "新笔记：1\n");
  expectFailure({"import", "undo", "x"}, 2, "flomo、notes");
  EXPECT_EQ(json({"import", "flomo", page, "--preview"})["missingAttachments"], 1);
  EXPECT_FALSE(fs::exists(root)) << "asking makes nothing";

  const auto terminal = start({.arguments = call});
  terminal->waitFor("开始导入吗？ [y/N]");
  terminal->type("y\r");
  EXPECT_EQ(terminal->finish(), 0);
  EXPECT_THAT(terminal->screen(), HasSubstr("✅ 导入成功！共导入 1 条笔记，涉及 1 天。"));
  EXPECT_THAT(run(call).errors, HasSubstr("1 条笔记都已存在，无需重复导入。"));
  EXPECT_EQ(json(call)["memosImported"], 0);

  expectFailure({"import", "undo", "flomo"}, 2, "1 条从 flomo 导入的笔记，可在回收站中恢复。");
  EXPECT_EQ(json({"import", "undo", "flomo", "-y"})["moved"].size(), 1U);
  EXPECT_THAT(run({"import", "undo", "flomo"}).errors, HasSubstr("没有从 flomo 导入的笔记"));
  EXPECT_EQ(json({"trash"}).size(), 1U);
  writeFile(page, "");
  expectFailure(call, 1, "❌ 导入失败：没有找到可导入的笔记");
}

}  // namespace
}  // namespace nomely::test
