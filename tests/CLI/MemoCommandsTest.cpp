#include <algorithm>

#include "CLI/CommandTest.h"

namespace nomely::test {
namespace {

using testing::Test;

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
  struct Case {
    std::string name;
    ProgramCall call;
    std::string body;
  };
  const std::vector<Case> cases{
      {"argument", {.arguments = {"add", "一\n二", "--json"}}, "一\n二"},
      {"dash", {.arguments = {"add", "-", "--json"}, .input = "甲\n"}, "甲"},
      {"piped", {.arguments = {"add", "--json"}, .input = "\n  \n乙\n\n"}, "乙\n"},
      {"after --", {.arguments = {"add", "--json", "--", "-- 丙"}}, "-- 丙"},
      {"global options first", {.arguments = {"--json", "--quiet", "add", "丁"}}, "丁"},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.name);
    const ProgramResult result = run(test.call);
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(Json::parse(result.output)["body"], test.body);
  }
}

TEST_F(MemoCommandsTest, EditKeepsASnapshotOfWhatItReplaces) {
  const Json added = add("旧的正文");
  EXPECT_EQ(json({"edit", "2026-03-01/1", "新的正文 #读书"})["tags"], Json({"读书"}));
  EXPECT_NE(treeOf(root / ".versions").find("旧的正文"), std::string::npos);
  const std::string before = treeOf(root);
  const ProgramResult unchanged = run({"edit", "2026-03-01/1", "新的正文 #读书"});
  EXPECT_EQ(unchanged.status, 0);
  EXPECT_EQ(treeOf(root), before);
}

TEST_F(MemoCommandsTest, SetChangesOneFieldAndLeavesTheOthers) {
  const Json added = add("正文", {"--tag", "甲", "--mood", "3"});
  struct Case {
    std::vector<std::string> arguments;
    Json expected;
  };
  const std::vector<Case> cases{
      {{"--lock"}, {{"pinned", true}, {"lockedOnTop", true}, {"mood", 3}}},
      {{"--unlock"}, {{"pinned", true}, {"lockedOnTop", false}}},
      {{"--lock"}, {{"lockedOnTop", true}}},
      {{"--unpin"}, {{"pinned", false}, {"lockedOnTop", false}}},
      {{"--tag", "乙", "--tag", "丙"}, {{"tags", {"甲", "乙", "丙"}}}},
      {{"--untag", "甲", "--tag", "乙"}, {{"tags", {"乙", "丙"}}}},
      {{"--time", "7:30"}, {{"time", "07:30"}}},
      {{"--mood", "-2"}, {{"mood", -2}}},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(testing::PrintToString(test.arguments));
    std::vector<std::string> arguments{"set", "2026-03-01/1"};
    arguments.insert(arguments.end(), test.arguments.begin(), test.arguments.end());
    const Json changed = json(arguments);
    for (const auto& [key, value] : test.expected.items()) EXPECT_EQ(changed[key], value) << key;
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
  EXPECT_EQ(readFile(root / "2026-03-01" / picture), "picture");

  const Json attached = json({"attach", "2026-03-01/1", (home.path() / "note.pdf").string()});
  ASSERT_EQ(attached["attachments"].size(), 2U);
  const Json described = json({"set", "2026-03-01/1", "--describe", "note.pdf", "合同"});
  EXPECT_EQ(described["attachmentDescriptions"][attached["attachments"][1]], "合同");

  const Json detached = json({"detach", "2026-03-01/1", "Photo.JPG"});
  EXPECT_EQ(detached["attachments"], Json({attached["attachments"][1]}));
  EXPECT_FALSE(detached["originalNames"].contains(picture));
  EXPECT_FALSE(std::filesystem::exists(root / "2026-03-01" / picture));
  EXPECT_NE(treeOf(root / ".trash" / "_attachments").find("picture"), std::string::npos);
  EXPECT_NE(treeOf(root / ".versions").find("picture"), std::string::npos);
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
  EXPECT_EQ(json({"list", "--day", "2026-03-01"}), Json::array());
  EXPECT_EQ(json({"move", "2026-03-05/1", "2026-03-05"}), moved);
}

TEST_F(MemoCommandsTest, ListAllIsNewestFirstAndLimited) {
  for (const char* time : {"08:00", "20:00", "12:00"})
    EXPECT_EQ(add(time, {"--time", time})["time"], time);
  EXPECT_EQ(json({"add", "later", "--date", "2026-03-02"})["seqNumber"], 1);
  EXPECT_EQ(json({"add", "imported", "--date", "2026-03-03", "--tag", "备忘录/旅行"})["seqNumber"],
            1);
  std::vector<std::string> bodies;
  for (const Json& memo : json({"list", "--all"})) bodies.push_back(memo["body"]);
  EXPECT_EQ(bodies, (std::vector<std::string>{"later", "20:00", "12:00", "08:00"}));
  EXPECT_EQ(json({"list", "--all", "-n", "2"}).size(), 2U);
}

TEST_F(MemoCommandsTest, FilesOfOtherProgramsAreReadListedAndEdited) {
  writeFile(
      root / "2026-03-01" / "001.md",
      "---\n# by hand\ntags: [生活, \"读书\"]\nweather: sunny\ntime: 8:00\n---\n手写的一条\n");
  writeFile(root / "2026-03-01" / "002.md", "no header at all");
  const ProgramResult listed = run({"list", "--day", "2026-03-01", "--json"});
  EXPECT_EQ(listed.status, 0);
  const Json memos = Json::parse(listed.output);
  ASSERT_EQ(memos.size(), 1U);
  EXPECT_EQ(memos[0]["tags"], Json({"生活", "读书"}));
  EXPECT_NE(listed.errors.find("002.md"), std::string::npos) << "a damaged file is not hidden";

  EXPECT_EQ(json({"edit", "2026-03-01/1", "改过"})["body"], "改过");
  EXPECT_EQ(memoFile("002.md"), "no header at all");
  EXPECT_EQ(json({"add", "下一条", "--date", "2026-03-01"})["seqNumber"], 3);
}

}  // namespace
}  // namespace nomely::test
