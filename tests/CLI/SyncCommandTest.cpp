#include "CLI/CommandTest.h"

namespace nomely::test {
namespace {

class SyncCommandTest : public CommandTest {
 protected:
  // What an engine leaves of a note that both machines made at once.
  void leaveStray(const std::string& body) const {
    writeFile(root / "2026-03-01" / strayName,
              "---\nid: memo_ffffffffffffffffffffffffffffffff\ntime: '08:00'\n---\n\n" + body);
  }
  static constexpr const char* strayName = "001.sync-conflict-20260301-101530-ABCDEFG.md";
};

TEST_F(SyncCommandTest, InitTellsTheEnginesAndThePerson) {
  EXPECT_THAT(run({"sync"}).output, HasSubstr("nomely sync init syncthing"));
  EXPECT_EQ(json({"sync"})["engines"], Json::array());
  EXPECT_FALSE(fs::exists(root)) << "looking makes nothing";
  expectFailure({"sync", "init"}, 2, "ENGINE");
  expectFailure({"sync", "init", "cloud"}, 2, "syncthing");
  for (const std::string engine : {"syncthing", "git"}) {
    const ProgramResult told = run({"sync", "init", engine});
    EXPECT_EQ(told.status, 0) << told.errors;
    EXPECT_THAT(told.output, HasSubstr("1. "));
    const std::string before = treeOf(root);
    const Json again = json({"sync", "init", engine});
    EXPECT_EQ(again["files"], Json::array());
    EXPECT_GE(again["steps"].size(), 4U);
    EXPECT_EQ(treeOf(root), before);
  }
  EXPECT_EQ(json({"sync"})["engines"][0]["engine"], "git")
      << "nothing moves .stfolder's folder yet";
  EXPECT_THAT(run({"sync"}).output, HasSubstr("同步设置完整"));
  fs::remove(root / ".gitignore");
  for (const char* command : {"sync", "doctor"})
    EXPECT_THAT(run({command}).output,
                HasSubstr(".gitignore：缺 12 行。补上：nomely sync init git"));
}

TEST_F(SyncCommandTest, DoctorNamesStraysAndSettlesThem) {
  (void)add("这台的");
  leaveStray("那台的");
  writeFile(root / "2026-03-01" / "001 (conflicted copy).md", "\xFF");
  const auto strays = [&] { return json({"doctor"})["sync"]["strays"]; };
  ASSERT_EQ(strays().size(), 2U);
  EXPECT_EQ(json({"doctor"})["orphanedAttachments"], Json::array()) << "told of once";
  EXPECT_THAT(run({"sync"}).output, HasSubstr("同步留下 2 个文件，其中 1 个可以合并"));
  expectFailure({"doctor", "--fix"}, 2, "--yes");
  EXPECT_TRUE(fs::exists(root / "2026-03-01" / strayName));
  const ProgramResult fixed = run({"doctor", "--fix", "--yes"});
  EXPECT_EQ(fixed.status, 0) << fixed.errors;
  EXPECT_THAT(fixed.errors, HasSubstr("已合并另一台电脑上的 1 条笔记"));
  ASSERT_EQ(strays().size(), 1U);
  EXPECT_EQ(strays()[0]["canBeSettled"], false);
  EXPECT_EQ(json({"show", "2026-03-01/2"})["body"], "那台的");
}

TEST_F(SyncCommandTest, RunSettlesWhatComesAndTellsOnce) {
  (void)add("这台的");
  const auto resident = start({.arguments = {"run", "--verbose"}});
  resident->waitFor("外部写入将实时刷新");
  leaveStray("那台的");
  resident->waitFor("已合并另一台电脑上的 1 条笔记");
  EXPECT_EQ(json({"show", "2026-03-01/2"})["body"], "那台的");
  writeFile(root / "2026-03-01/003.md", "---\ntime: '09:00'\n---\n\n引擎放下的");
  resident->waitFor("其他程序写入了笔记，已刷新");
  resident->type("\x03");
  EXPECT_EQ(resident->finish(), 0);
}

}  // namespace
}  // namespace nomely::test
