#include "CLI/CommandTest.h"

namespace nomely::test {
namespace {

class TrashCommandsTest : public CommandTest {};

TEST_F(TrashCommandsTest, RemovedMemosAreListedAndRestored) {
  const Json first = add("一");
  const Json second = add("二");
  const Json removed = json({"rm", "2026-03-01/1", "2026-03-01/2"});
  EXPECT_EQ(removed[0],
            (Json{{"date", "2026-03-01"}, {"seqNumber", 1}, {"trashSubdir", "2026-03-01_001"}}));
  EXPECT_EQ(json({"list", "--day", "2026-03-01"}), Json::array());
  EXPECT_EQ(json({"trash"}).size(), 2U);
  EXPECT_EQ(json({"trash", "list"})[0]["originalDate"], "2026-03-01");
  EXPECT_EQ(json({"trash", "restore", "2026-03-01_001"}).size(), 1U);
  EXPECT_EQ(json({"show", "2026-03-01/1"}), first);
}

TEST_F(TrashCommandsTest, DeletingForGoodHasToBeConfirmed) {
  for (const char* text : {"一", "二", "三"}) EXPECT_EQ(add(text)["body"], text);
  EXPECT_EQ(json({"rm", "2026-03-01/1", "2026-03-01/2", "2026-03-01/3"}).size(), 3U);
  const std::string before = treeOf(root);
  for (const std::vector<std::string>& refused :
       {std::vector<std::string>{"trash", "empty"},
        {"trash", "delete", "2026-03-01_001"},
        {"trash", "delete", "--from", "2026-01-01", "--to", "today"}}) {
    SCOPED_TRACE(testing::PrintToString(refused));
    EXPECT_EQ(run(refused).status, 2);
  }
  EXPECT_EQ(run({.arguments = {"trash", "empty"}, .input = "n\n", .inputKind = InputKind::terminal})
                .status,
            0);
  EXPECT_EQ(treeOf(root), before);

  EXPECT_EQ(json({"trash", "delete", "2026-03-01_001", "-y"}).size(), 2U);
  EXPECT_EQ(json({"trash", "delete", "--from", "2026-04-01", "--to", "2026-05-01"}).size(), 2U);
  EXPECT_EQ(json({"trash", "delete", "--from", "2026-03-01", "--to", "2026-03-01", "-y"}).size(),
            0U);
  EXPECT_EQ(json({"trash", "empty", "-y"}), Json::array());
}

TEST_F(TrashCommandsTest, HistoryShowsRestoresAndClears) {
  const Json added = add("一");
  for (const char* text : {"二", "三"})
    EXPECT_EQ(json({"edit", "2026-03-01/1", text})["body"], text);
  const Json history = json({"history", "2026-03-01/1"});
  ASSERT_EQ(history.size(), 2U);
  EXPECT_EQ(history[0]["index"], 1);
  EXPECT_EQ(history[0]["memo"]["body"], "二");
  EXPECT_EQ(json({"history", "2026-03-01/1", "show", "2"})["memo"]["body"], "一");
  EXPECT_EQ(json({"history", "2026-03-01/1", "restore", "2"})["body"], "一");
  EXPECT_EQ(json({"show", "2026-03-01/1"})["body"], "一");
  EXPECT_EQ(run({"history", "2026-03-01/1", "clear"}).status, 2);
  EXPECT_EQ(json({"history", "2026-03-01/1", "clear", "-y"}), Json::array());
}

}  // namespace
}  // namespace nomely::test
