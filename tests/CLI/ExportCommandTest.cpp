#include <gmock/gmock.h>

#include "CommandTest.h"

namespace nomely::test {
namespace {

using testing::HasSubstr;

class ExportCommandTest : public CommandTest {
 protected:
  std::filesystem::path file = home.path() / "页.html";
};

TEST_F(ExportCommandTest, PagesOfSelections) {
  (void)add("一 #甲");
  (void)add("二 #乙");
  const Json result = json({"export", "html", "-o", file.string(), "--tag", "乙"});
  EXPECT_EQ(result["file"], file.string());
  EXPECT_EQ(result["memos"], 1);
  EXPECT_EQ(result["bytes"], std::filesystem::file_size(file));
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

  const ProgramResult nowhere = run({"export", "html", "-o", (home.path() / "no" / "x").string()});
  EXPECT_EQ(nowhere.status, 4);
  EXPECT_THAT(nowhere.errors, HasSubstr("没有这个文件夹"));
}

}  // namespace
}  // namespace nomely::test
