#include "CLI/CommandTest.h"

namespace nomely::test {
namespace {

class BackupCommandTest : public CommandTest {
 protected:
  [[nodiscard]] std::string backup() const { return json({"backup"})["file"]; }
  [[nodiscard]] std::vector<std::string> bodies() const {
    std::vector<std::string> bodies;
    for (const Json& memo : json({"list", "--all", "--reverse"})) bodies.push_back(memo["body"]);
    return bodies;
  }
};

TEST_F(BackupCommandTest, FromTheBackupToTheDiary) {
  writeFile(home.path() / "海.jpg", "像素");
  (void)add("海边", {"--attach", (home.path() / "海.jpg").string()});
  (void)add("第二条");
  const std::string file = backup();
  EXPECT_EQ(json({"backup", "verify", file})["notes"], 2);
  EXPECT_THAT(json({"backup", "show", "@"})["memos"], SizeIs(2));
  EXPECT_EQ(json({"backup", "show", "@", "2026-03-01/2"})["body"], "第二条");
  expectFailure({"backup", "show", "@", "2026-03-01/3"}, 4, "没有编号为 3 的笔记");

  // A note of it, as one more.
  (void)run({"rm", "2026-03-01/1"});
  const Json again = json({"backup", "restore", fs::path(file).filename(), "2026-03-01/1"});
  EXPECT_EQ(again["seqNumber"], 3);
  const std::string picture = again["attachments"][0];
  EXPECT_EQ(readFile(root / "2026-03-01" / picture), "像素");
  EXPECT_EQ(again["originalNames"][picture], "海.jpg");

  // All of it; a damaged copy of it changes nothing.
  std::string bytes = readFile(file);
  bytes[bytes.size() / 2] ^= 1;
  writeFile(home.path() / "坏.zip", bytes);
  expectFailure({"backup", "verify", (home.path() / "坏.zip").string()}, 1, "备份校验失败");
  expectFailure({"backup", "restore", (home.path() / "坏.zip").string(), "--yes"}, 1,
                "备份校验失败");
  EXPECT_EQ(bodies(), (std::vector<std::string>{"第二条", "海边"}));
  expectFailure({"backup", "restore", file}, 2, "当前数据将被替换");
  const Json restored = json({"backup", "restore", file, "--yes"});
  EXPECT_EQ(bodies(), (std::vector<std::string>{"海边", "第二条"}));
  EXPECT_TRUE(fs::exists(fs::path(std::string(restored["rescue"])) / "2026-03-01/003.md"));
  EXPECT_TRUE(fs::exists(std::string(restored["safetyCopy"])));
  EXPECT_THAT(json({"backup", "list"}), SizeIs(testing::Ge(2)));

  // Elsewhere, where no root is yet.
  fs::create_directory(home.path() / "usb");
  const std::string manual =
      json({"backup", "now", "--to", (home.path() / "usb").string()})["file"];
  EXPECT_THAT(manual, HasSubstr("/usb/nomely-manual-"));
  root = home.path() / "machine" / "diary";
  fs::create_directory(root.parent_path());
  EXPECT_EQ(json({"backup", "restore", manual, "--yes"})["rescue"], "");
  EXPECT_EQ(bodies(), (std::vector<std::string>{"海边", "第二条"}));
}

TEST_F(BackupCommandTest, WhatIsHardToTakeBackIsBackedUpFirst) {
  (void)add("一 #工作");
  (void)add("二");
  (void)run({"rm", "2026-03-01/2"});
  const std::vector<std::vector<std::string>> operations{
      {"trash", "empty", "--yes"}, {"tags", "delete", "工作", "--with-memos", "--yes"}};
  fs::create_symlink("/etc", root / "2026-03-01" / "link");
  for (const auto& operation : operations) expectFailure(operation, 1, "前自动备份失败");
  EXPECT_THAT(json({"trash"}), SizeIs(1));
  fs::remove(root / "2026-03-01" / "link");
  for (std::size_t made = 0; const auto& operation : operations) {
    EXPECT_EQ(run(operation).status, 0);
    EXPECT_THAT(json({"backup", "list"}), SizeIs(++made));
  }
  EXPECT_EQ(run({"trash", "empty", "--yes", "--no-backup"}).status, 0);
  EXPECT_THAT(json({"backup", "list"}), SizeIs(operations.size()));
  EXPECT_THAT(run({"backup", "now", "--if-needed"}).errors, HasSubstr("跳过"));
}

}  // namespace
}  // namespace nomely::test
