#include <algorithm>

#include "CLI/CommandTest.h"

namespace nomely::test {
namespace {

class MemoCommandsTest : public CommandTest {};

TEST_F(MemoCommandsTest, AddedMemoIsListedShownAndOnDisk) {
  const Json added = add("[今天]", {"读完了,一本书", "--time", "9:05", "--tag", "#生活／读书，",
                                    "--tag", "生活/读书", "--mood", "4"});
  EXPECT_EQ(added["date"], "2026-03-01");
  EXPECT_EQ(added["seqNumber"], 1);
  EXPECT_EQ(added["time"], "09:05");
  EXPECT_EQ(added["tags"], Json({"生活/读书"}));
  EXPECT_EQ(added["mood"], 4);
  EXPECT_EQ(added["body"], "[今天] 读完了,一本书");
  EXPECT_EQ(added["schemaVersion"], 2);
  EXPECT_EQ(added["source"], "nomely");

  const std::string identifier = added["memoId"];
  EXPECT_EQ(json({"list", "--day", "2026-03-01"}), Json({added}));
  for (const std::string& reference :
       {std::string("2026-03-01/1"), identifier, identifier.substr(0, 13)})
    EXPECT_EQ(json({"show", reference}), added) << reference;
  EXPECT_EQ(run({"show", "2026-03-01/1", "--raw"}).output, memoFile("001.md"));
}

TEST_F(MemoCommandsTest, TextComesFromArgumentOrStandardInput) {
  const std::tuple<std::string, ProgramCall, std::string> cases[] = {
      {"argument", {.arguments = {"add", "一\n二", "--json"}}, "一\n二"},
      {"dash", {.arguments = {"add", "-", "--json"}, .input = "甲\n"}, "甲"},
      {"piped", {.arguments = {"add", "--json"}, .input = "\n  \n乙\n\n"}, "乙\n"},
      {"after --", {.arguments = {"add", "--json", "--", "-- 丙"}}, "-- 丙"},
      {"global options first", {.arguments = {"--json", "--quiet", "add", "丁"}}, "丁"},
  };
  for (const auto& [name, call, body] : cases) {
    SCOPED_TRACE(name);
    const ProgramResult result = run(call);
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(Json::parse(result.output)["body"], body);
  }
}

TEST_F(MemoCommandsTest, SetChangesOneFieldAndLeavesTheOthers) {
  const Json added = add("正文", {"--tag", "甲", "--mood", "3"});
  const std::pair<std::vector<std::string>, Json> cases[] = {
      {{"--lock"}, {{"pinned", true}, {"lockedOnTop", true}, {"mood", 3}}},
      {{"--unlock"}, {{"pinned", true}, {"lockedOnTop", false}}},
      {{"--lock"}, {{"lockedOnTop", true}}},
      {{"--unpin"}, {{"pinned", false}, {"lockedOnTop", false}}},
      {{"--tag", "乙", "--tag", "丙"}, {{"tags", {"甲", "乙", "丙"}}}},
      {{"--untag", "甲", "--tag", "乙"}, {{"tags", {"乙", "丙"}}}},
      {{"--time", "7:30"}, {{"time", "07:30"}}},
      {{"--mood", "-2"}, {{"mood", -2}}},
  };
  for (auto [arguments, expected] : cases) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    arguments.insert(arguments.begin(), {"set", "2026-03-01/1"});
    const Json changed = json(arguments);
    for (const auto& [key, value] : expected.items()) EXPECT_EQ(changed[key], value) << key;
    EXPECT_EQ(changed["body"], "正文");
  }
  EXPECT_FALSE(json({"set", "2026-03-01/1", "--mood", "none"}).contains("mood"));
}

TEST_F(MemoCommandsTest, AttachmentsComeGoAndAreDescribed) {
  writeFile(home.path() / "Photo.JPG", "picture");
  writeFile(home.path() / "note.pdf", "document");
  const Json added = add("带附件", {"--attach", (home.path() / "Photo.JPG").string()});
  const std::string picture = added["attachments"][0];
  EXPECT_TRUE(picture.ends_with(".jpg"));
  EXPECT_EQ(added["originalNames"][picture], "Photo.JPG");

  const Json attached = json({"attach", "2026-03-01/1", (home.path() / "note.pdf").string()});
  ASSERT_EQ(attached["attachments"].size(), 2U);
  const Json described = json({"set", "2026-03-01/1", "--describe", "note.pdf", "合同"});
  EXPECT_EQ(described["attachmentDescriptions"][attached["attachments"][1]], "合同");

  const Json detached = json({"detach", "2026-03-01/1", "Photo.JPG"});
  EXPECT_EQ(detached["attachments"], Json({attached["attachments"][1]}));
  EXPECT_FALSE(detached["originalNames"].contains(picture));
}

TEST_F(MemoCommandsTest, AFileIsAttachedWithPipedTextOrNone) {
  writeFile(home.path() / "a.txt", "文件");
  const std::string file = (home.path() / "a.txt").string();
  const ProgramResult piped =
      run({.arguments = {"add", "--attach", file, "--json"}, .input = "说明文字\n"});
  EXPECT_EQ(Json::parse(piped.output)["body"], "说明文字");
  const ProgramResult alone =
      run({.arguments = {"add", "--attach", file, "--json"}, .inputKind = InputKind::terminal});
  EXPECT_EQ(alone.status, 0) << alone.errors;
  EXPECT_EQ(Json::parse(alone.output)["body"], "");
  EXPECT_EQ(run({.arguments = {"add", "--no-input"}, .inputKind = InputKind::terminal}).status, 2);
}

TEST_F(MemoCommandsTest, MoveShowsTheMemoWhereItIs) {
  const Json added = add("要移动");
  const Json moved = json({"move", "2026-03-01/1", "2026-03-05"});
  EXPECT_EQ(moved["date"], "2026-03-05");
  EXPECT_EQ(moved["memoId"], added["memoId"]);
  EXPECT_EQ(json({"move", "2026-03-05/1", "2026-03-05"}), moved);
}

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
        {"trash", "delete", "--from", "2026-01-01", "--to", "today"}})
    EXPECT_EQ(run(refused).status, 2) << testing::PrintToString(refused);
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
  EXPECT_EQ(run({"history", "2026-03-01/1", "clear"}).status, 2);
  EXPECT_EQ(json({"history", "2026-03-01/1", "clear", "-y"}), Json::array());
}

class QueryCommandsTest : public CommandTest {
 protected:
  [[nodiscard]] std::vector<std::string> bodies(std::vector<std::string> arguments) const {
    std::vector<std::string> found;
    for (const Json& memo : json(std::move(arguments))) found.push_back(memo["body"]);
    return found;
  }
};

TEST_F(QueryCommandsTest, SearchFindsAndShowsWhy) {
  const Json first = add("今天读了《边城》，雨停了");
  const Json second = add("Finished the Report", {"--tag", "工作/报告"});
  EXPECT_EQ(bodies({"search", "边城"}), std::vector<std::string>{"今天读了《边城》，雨停了"});
  EXPECT_EQ(json({"search", "report"})[0]["snippet"], "Finished the >>>Report<<<");
  EXPECT_NE(run({"search", "边城", "--color", "always"}).output.find("\x1B[1m"), std::string::npos);
  EXPECT_NE(run({"search", "报告"}).output.find("标签命中 #工作/报告"), std::string::npos);
}

TEST_F(QueryCommandsTest, ListSelects) {
  writeFile(home.path() / "a.PNG", "picture");
  writeFile(home.path() / "b.m4a", "sound");
  const auto file = [&](const char* name) { return (home.path() / name).string(); };
  EXPECT_EQ(add("图", {"--attach", file("a.PNG"), "--tag", "甲/乙"})["seqNumber"], 1);
  EXPECT_EQ(add("音", {"--attach", file("b.m4a")})["seqNumber"], 2);
  EXPECT_EQ(add("链 https://example.org")["seqNumber"], 3);
  EXPECT_EQ(json({"set", "2026-03-01/2", "--pin"})["pinned"], true);
  EXPECT_EQ(add("外来", {"--tag", "备忘录/旅行"})["seqNumber"], 4);
  const std::pair<std::vector<std::string>, std::vector<std::string>> cases[] = {
      {{"--tag", "甲"}, {"图"}}, {{"--untagged", "-n", "1"}, {"音"}},
      {{"--images"}, {"图"}},    {{"--audio"}, {"音"}},
      {{"--pinned"}, {"音"}},    {{"--links"}, {"链 https://example.org"}},
      {{"--files"}, {}},         {{"--all"}, {"音", "链 https://example.org", "图"}},
  };
  for (auto [arguments, expected] : cases) {
    arguments.insert(arguments.begin(), "list");
    EXPECT_EQ(bodies(arguments), expected) << testing::PrintToString(arguments);
  }
}

TEST_F(QueryCommandsTest, TagsAreCountedRenamedMergedAndDeleted) {
  EXPECT_EQ(add("一 #旧名")["tags"], Json({"旧名"}));
  EXPECT_EQ(add("二", {"--tag", "旧名/下级"})["seqNumber"], 2);
  EXPECT_EQ(json({"tags", "count", "旧名"})["count"], 2);
  EXPECT_EQ(run({"tags", "rename", "旧名", "新名"}).status, 2) << "needs --yes";
  const Json renamed = json({"tags", "rename", "旧名", "新名", "-y"});
  EXPECT_EQ(renamed.size(), 2U);
  EXPECT_EQ(json({"show", "2026-03-01/1"})["body"], "一");
  EXPECT_EQ(json({"show", "2026-03-01/2"})["tags"], Json({"新名/下级"}));
  EXPECT_EQ(json({"tags", "merge", "新名/下级", "新名", "-y"}).size(), 1U);
  EXPECT_EQ(json({"tags", "delete", "新名", "-y"}), Json::array());
  EXPECT_EQ(add("三", {"--tag", "丙"})["seqNumber"], 3);
  EXPECT_EQ(json({"tags", "delete", "丙", "--with-memos", "-y"}), Json::array());
  EXPECT_EQ(json({"trash"}).size(), 1U);
}

TEST_F(QueryCommandsTest, MonthOnOnePage) {
  const Json late = add("2026年3月2日 补记 #日记", {"--time", "20:00"});
  const Json early = add("早上 #日记", {"--time", "8:00"});
  EXPECT_EQ(json({"add", "又一条 #日记", "--date", "2026-03-09"})["seqNumber"], 1);
  writeFile(root / "2026-03-10", "a file where a day would be");
  const Json month = json({"month", "2026-03"});
  EXPECT_EQ(month["dailyCounts"], Json({{"1", 2}, {"9", 1}}));
  EXPECT_EQ(month["threads"][0]["days"], Json({1, 9}));
  EXPECT_EQ(month["threads"][0]["entries"][0]["time"], "20:00") << "as in the timeline";
  EXPECT_EQ(month["anomalies"][0]["seqNumber"], late["seqNumber"]);
  EXPECT_EQ(json({"month", "2026-02"})["threads"], Json::array());
  EXPECT_NE(run({"month", "2026-03"}).output.find("   9 ▒▒"), std::string::npos);
}

}  // namespace
}  // namespace nomely::test
