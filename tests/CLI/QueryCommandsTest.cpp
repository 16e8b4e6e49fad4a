#include "CLI/CommandTest.h"

namespace nomely::test {
namespace {

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
  EXPECT_EQ(json({"search", "#工作"}).size(), 1U);
  EXPECT_EQ(json({"search", "没有这个词"}), Json::array());
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
  struct Case {
    std::vector<std::string> arguments;
    std::vector<std::string> expected;
  };
  const std::vector<Case> cases{
      {{"--tag", "甲"}, {"图"}}, {{"--untagged", "-n", "1"}, {"音"}},
      {{"--images"}, {"图"}},    {{"--audio"}, {"音"}},
      {{"--pinned"}, {"音"}},    {{"--links"}, {"链 https://example.org"}},
      {{"--files"}, {}},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(testing::PrintToString(test.arguments));
    std::vector<std::string> arguments{"list"};
    arguments.insert(arguments.end(), test.arguments.begin(), test.arguments.end());
    EXPECT_EQ(bodies(arguments), test.expected);
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
