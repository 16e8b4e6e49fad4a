#include <map>

#include "CLI/CommandTest.h"

namespace nomely::test {
namespace {

class BadInputTest : public CommandTest {};

TEST_F(BadInputTest, WrongUsageSaysWhatWouldBeRightAndWritesNothing) {
  const Json added = add("正文");
  const Json other = add("另一条");
  const std::string before = treeOf(root);
  const std::tuple<std::string, std::vector<std::string>, int, std::string> cases[] = {
      {"no such command", {"frobnicate"}, 2, "frobnicate"},
      {"empty text", {"add", " \n"}, 2, "空"},
      {"no text", {"add"}, 2, "空"},
      {"day out of range", {"add", "x", "--date", "2026-02-30"}, 2, "2026-03-01"},
      {"days the wrong way", {"list", "--from", "3-2", "--to", "3-1"}, 2, "对调"},
      {"time", {"add", "x", "--time", "25:00"}, 2, "HH:MM"},
      {"mood", {"set", "2026-03-01/1", "--mood", "good"}, 2, "整数"},
      {"mood beyond 64 bits", {"add", "x", "--mood", "99999999999999999999"}, 2, "整数"},
      {"tag", {"add", "x", "--tag", "a//b"}, 2, "标签"},
      {"nothing to set", {"set", "2026-03-01/1"}, 2, "--mood"},
      {"limit", {"list", "-n", "0"}, 2, "-n"},
      {"reference", {"show", "seven"}, 2, "日期/编号"},
      {"reference number", {"show", "2026-03-01/x"}, 2, "编号"},
      {"short identifier", {"show", "memo_12"}, 2, "8 个字符"},
      {"no such number", {"show", "2026-03-01/9"}, 4, "9"},
      {"no such identifier", {"edit", "memo_0123456789", "x"}, 4, "memo_0123456789"},
      {"no such file", {"attach", "2026-03-01/1", "/nonexistent/a.txt"}, 4, "a.txt"},
      {"folder as file", {"add", "x", "--attach", "/"}, 2, "普通文件"},
      {"no such attachment", {"detach", "2026-03-01/1", "a.txt"}, 4, "a.txt"},
      {"input that is not UTF-8", {"add", "-"}, 2, "UTF-8"},
      {"argument that is not UTF-8", {"edit", "2026-03-01/1", "\xC3("}, 2, "UTF-8"},
      {"empty edit", {"edit", "2026-03-01/1", ""}, 2, "空"},
      {"rank", {"show", "@0"}, 2, "@3"},
      {"beyond the oldest", {"show", "@3"}, 4, "共 2 条"},
      {"nothing to open", {"open", "@"}, 4, "没有附件"},
      {"nothing to append", {"append", "@", " "}, 2, "未改动"},
      {"reference left out", {"show"}, 2, "用法：nomely show REF..."},
      {"value left out", {"list", "--day"}, 2, "--day 后面缺少 DATE"},
      {"value for a flag", {"list", "--quiet=5"}, 2, "--quiet 后面不能有值"},
      {"no such option", {"--sideways"}, 2, "没有“--sideways”这个选项"},
      {"two that exclude each other", {"set", "2026-03-01/1", "--lock", "--unlock"}, 2, "--lock"},
      {"no such action", {"tags", "paint"}, 2, "请用 list、rename、merge、delete、count"},
      {"no action", {"export"}, 2, "html"},
      {"argument of none", {"tags", "list", "甲"}, 2, "多余的参数：甲"},
      {"argument of another action", {"trash", "empty", "2026-03-01_001"}, 2, "多余的参数"},
      {"option of another action", {"trash", "restore", "a", "--from", "today"}, 2, "--from"},
      {"number for a list", {"history", "2026-03-01/1", "list", "5"}, 2, "多余的参数：5"},
      {"number of nothing", {"history", "2026-03-01/1", "show", "零"}, 2, "不小于 1"},
      {"no such version", {"history", "2026-03-01/1", "show", "1"}, 4, "共 0 个"},
      {"the same tag", {"tags", "rename", "甲", "甲", "-y"}, 2, "相同"},
      {"days or names", {"trash", "delete", "a", "--from", "today", "--to", "today"}, 2, "--to"},
      {"half a range", {"trash", "delete", "--from", "2026-01-01"}, 2, "--to"},
      {"nothing to delete", {"trash", "delete"}, 2, "trash list"},
      {"not in the trash", {"trash", "restore", "a"}, 4, "回收站里没有"},
      {"month", {"month", "2026-3"}, 2, "2026-03"},
      {"nothing to look for", {"search", "  "}, 2, "search"},
      {"help for nothing", {"help", "frobnicate"}, 2, "frobnicate"},
  };
  for (const auto& [name, arguments, status, says] : cases) {
    SCOPED_TRACE(name);
    const ProgramResult result =
        run({.arguments = arguments, .input = arguments.back() == "-" ? "\xFF\xFE\n" : ""});
    EXPECT_EQ(result.status, status) << result.errors;
    EXPECT_THAT(result.errors, HasSubstr(says));
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(treeOf(root), before);
  }
}

TEST_F(BadInputTest, FailuresAreAlsoJson) {
  const std::tuple<std::vector<std::string>, int, std::string> cases[] = {
      {{"show", "2026-03-01/1", "--json"}, 4, "notFound"},
      {{"--json", "frobnicate"}, 2, "usage"},
      {{"show", "2026-03-01/1", "--raw", "--json"}, 2, "usage"},
      {{"export", "html", "-o", "-", "--json"}, 2, "usage"},
  };
  for (const auto& [arguments, status, code] : cases) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const ProgramResult result = run(arguments);
    EXPECT_EQ(result.status, status);
    const Json error = Json::parse(result.output)["error"];
    EXPECT_EQ(error["code"], code);
    EXPECT_NE(result.errors.find(std::string(error["message"])), std::string::npos);
  }
}

TEST_F(BadInputTest, UnusableRootsReportTheSystemsReason) {
  writeFile(root, "a file");
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"list"}, {"add", "x"}, {"doctor"}, {}})
    expectFailure(arguments, 1, "不是文件夹");
  EXPECT_EQ(readFile(root), "a file");
}

TEST_F(BadInputTest, DoctorFindsWhatIsWrongAndChangesNothing) {
  const Json added = add("好的");
  writeFile(root / "2026-03-01" / "002.md", "---\nmood: abc\n---\n");
  writeFile(root / "2026-03-01" / "7.md", "---\ntime: 08:00\n---\n");
  writeFile(root / "2026-03-01" / "003.md", "---\nattachments: [gone.png]\n---\n");
  writeFile(root / "2026-03-01" / ".nomely-0123.tmp", "half");
  writeFile(root / "2026-03-01" / "a.png", "may be the unreadable memo's");
  EXPECT_EQ(json({"add", "又一天", "--date", "2026-03-02"})["seqNumber"], 1);
  writeFile(root / "2026-03-02" / "b.png", "no memo's");
  writeFile(root / "2026-03-02" / "c.png", "a draft's");
  writeFile(root / ".drafts" / "focus-2026-03-02-001.json",
            R"({"bodyText":"","tags":[],"attachments":["c.png"],"audioTranscripts":{},)"
            R"("updatedAt":"2026-03-02T08:00:00Z"})");
  const std::string before = treeOf(root);
  const Json report = json({"doctor"});
  EXPECT_EQ(report["orphanedAttachments"], Json({"2026-03-02/b.png"}));
  EXPECT_EQ(treeOf(root), before);
  EXPECT_EQ(report["memos"], 3);
  ASSERT_EQ(report["unreadableMemos"].size(), 1U);
  EXPECT_EQ(report["unreadableMemos"][0]["file"], "2026-03-01/002.md");
  EXPECT_EQ(report["sync"]["strays"][0]["file"], "2026-03-01/7.md");
  EXPECT_EQ(report["missingAttachments"][0]["attachment"], "gone.png");
  EXPECT_EQ(report["staleTemporaryFiles"], Json({"2026-03-01/.nomely-0123.tmp"}));
  EXPECT_EQ(run({"doctor"}).status, 0);
  const std::string damaged = ".drafts/quick-input.json";
  writeFile(root / damaged, "{");
  EXPECT_EQ(json({"doctor"})["damagedDrafts"], Json({damaged}));
  EXPECT_EQ(json({"doctor"})["orphanedAttachments"], Json::array()) << "it may name one of them";
}

TEST_F(BadInputTest, DoctorFindsVersionsAndTrashThatShowNothing) {
  const std::string id = add("一")["memoId"];
  const std::string memo = memoFile("001.md");
  (void)json({"edit", "2026-03-01/1", "二"});
  const auto kept = json({"history", "2026-03-01/1"})[0]["filename"].get<fs::path>();
  const fs::path own = fs::path(".versions") / kept.parent_path();
  (void)json({"rm", "2026-03-01/1"});
  const std::string otherMemo = "---\nid: memo_other\n---\n";
  const struct {
    fs::path path;
    std::string content;
    std::string told = {};  // part of the reason why this file or its folder is told of
  } versions[] =
      {
          {own / "1.5_A.md", memo},
          {own / "attachments" / "x.png", "x"},
          {own / "draft_A.md", memo, "文件名"},
          {own / "2_A.md", otherMemo, "不是这条笔记"},
          {own / "3_A.md", "half a mem", "没有文件头"},
          {".versions/2020-01-01_001/4_A.md", otherMemo},
          {".versions/2020-01-01_001/5_A.md", "\xff", "UTF-8"},
      },
    trash[] = {
        {".trash/_attachments/2026-03-01_080000/x.png", "x"},
        {".trash/a/memo.md", memo, "缺少 meta.txt"},
        {".trash/b/meta.txt", "2026-03-01,7", "缺少 memo.md"},
        {".trash/c/meta.txt", "../../x,7", "meta.txt 不是"},
        {".trash/c/memo.md", memo, "meta.txt 不是"},
        {".trash/d/meta.txt", "2026-03-01,7", "UTF-8"},
        {".trash/d/memo.md", "\xff", "UTF-8"},
    };
  for (const auto& file : versions) writeFile(root / file.path, file.content);
  for (const auto& file : trash) writeFile(root / file.path, file.content);
  const std::string before = treeOf(root);
  const Json report = json({"doctor"});
  EXPECT_EQ(treeOf(root), before);
  std::map<fs::path, std::string> told;
  for (const Json& each : report["unreadableVersions"]) told[each["file"]] = each["reason"];
  for (const Json& each : report["unreadableTrash"]) told[each["folder"]] = each["reason"];
  EXPECT_EQ(told.size(), 8U);
  const auto check = [&](const fs::path& path, const std::string& reason) {
    EXPECT_EQ(told.contains(path), !reason.empty()) << path;
    EXPECT_NE(told[path].find(reason), std::string::npos) << path << told[path];
  };
  for (const auto& file : versions) check(file.path, file.told);
  for (const auto& file : trash) check(file.path.parent_path(), file.told);
}

}  // namespace
}  // namespace nomely::test
