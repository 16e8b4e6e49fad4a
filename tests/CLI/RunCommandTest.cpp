#include <regex>

#include <gmock/gmock.h>

#include "CLI/CommandTest.h"
#include "Feishu/Platform/FeishuPlatform.h"
#include "Platform/Files/FileSystem.h"

namespace nomely::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class RunCommandTest : public CommandTest {
 protected:
  RunCommandTest() {
    const FeishuConfig config = platform.config();
    EXPECT_EQ(run({"config", "set", "feishu.appId", config.appId}).status, 0);
    EXPECT_EQ(run({"config", "set", "feishu.enabled", "true"}).status, 0);
    keep(config.appSecret);
  }

  void keep(const std::string& secret) const {
    EXPECT_EQ(run(ProgramCall{.arguments = {"secret", "set", "feishu"}, .input = secret}).status,
              0);
  }
  [[nodiscard]] ProgramCall call(std::vector<std::string> arguments) const {
    return {
        .arguments = std::move(arguments),
        .environment = {{"NOMELY_ROOT", root.string()}, {"NOMELY_FEISHU_ROOT", platform.root()}}};
  }
  [[nodiscard]] std::unique_ptr<TerminalRun> start(std::vector<std::string> arguments) const {
    return std::make_unique<TerminalRun>(TestPaths::nomely, home.path(),
                                         call(std::move(arguments)));
  }

  FeishuPlatform platform;
};

TEST_F(RunCommandTest, FromThePhoneToTheDiary) {
  const auto resident = start({"run"});
  resident->waitFor("nomely bot pair");
  resident->waitFor("机器人已连接");
  EXPECT_THAT(run({"run"}).errors, HasSubstr("已经有一个 nomely run 在运行"));
  EXPECT_EQ(run({"run"}).status, 1);

  const auto pairing = start({"bot", "pair"});
  const std::string asked = pairing->waitFor("\n");
  std::smatch code;
  ASSERT_TRUE(std::regex_search(asked, code, std::regex("[0-9]{6}")));
  platform.send(phone::text("om_pair", code.str()).by("ou_me"));
  platform.awaitReply("om_pair");
  pairing->waitFor("已绑定 ou_me");
  EXPECT_EQ(pairing->finish(), 0);
  resident->waitFor("已绑定");

  platform.send(phone::text("om_1", "私密的一句 #散步").by("ou_me"));
  platform.send(phone::text("om_2", "陌生人").by("ou_stranger"));
  platform.awaitAck("om_1");
  platform.awaitAck("om_2");
  platform.awaitReaction("om_1", "THUMBSUP");
  resident->waitFor("已记录");
  const Json memos = json({"list", "--all"});
  ASSERT_EQ(memos.size(), 1U);
  EXPECT_EQ(memos[0]["body"], "私密的一句 #散步");
  EXPECT_EQ(memos[0]["source"], "feishu");

  const Json status = json({"bot"});
  EXPECT_EQ(status["running"], true);
  EXPECT_EQ(status["allowedOpenID"], "ou_me");
  EXPECT_EQ(status["connection"]["status"], "connected");
  EXPECT_EQ(status["connection"]["recorded"], 1);
  EXPECT_EQ(status["waiting"], 0);
  const std::string log = run({"bot", "log"}).output;
  EXPECT_THAT(log, AllOf(HasSubstr("→ 私密的一句"), HasSubstr("← 👍 已记录"),
                         Not(HasSubstr(code.str())), Not(HasSubstr("陌生人"))));
  EXPECT_EQ(run({"bot", "log", "--clear", "--yes"}).status, 0);
  EXPECT_THAT(json({"bot", "log"}), IsEmpty());

  resident->type("\x03");
  EXPECT_EQ(resident->finish(), 0);
  EXPECT_THAT(resident->screen(), AllOf(HasSubstr("已停止"), Not(HasSubstr("私密"))));
  EXPECT_EQ(json({"bot"})["running"], false);
  EXPECT_THAT(platform.complaints(), IsEmpty());
}

TEST_F(RunCommandTest, StartsOverOnAnotherRoot) {
  const fs::path other = home.path() / "other";
  EXPECT_EQ(run({"config", "set", "feishu.allowedOpenID", "ou_me"}).status, 0);
  fs::copy(root, other, fs::copy_options::recursive);
  const auto resident = start({"run", "--verbose"});
  resident->waitFor("外部写入将实时刷新");
  writeFile(root / "2026-03-01/901.md", "");
  resident->waitFor("其他程序写入了笔记，已刷新");
  for (int restores = 0; restores < 2; ++restores) {
    ASSERT_TRUE(posixFileSystem().exchange(root, other));
    resident->waitFor("数据目录已被替换，重新开始");
  }
  resident->waitFor("机器人已连接");
  EXPECT_EQ(run({"run"}).status, 1);

  fs::rename(root, home.path() / "away");
  resident->waitFor("数据目录不见了");
  EXPECT_FALSE(fs::exists(root));
  fs::rename(other, root);
  resident->waitFor("重新开始");
  platform.send(phone::text("om_2", "一句").by("ou_me"));
  platform.awaitAck("om_2");
  EXPECT_EQ(json({"list", "--all"}).size(), 1U);
  resident->type("\x03");
  EXPECT_EQ(resident->finish(), 0);
}

TEST_F(RunCommandTest, WhatIsWrongIsToldBeforehand) {
  const auto test = [&] { return run(call({"bot", "test"})); };
  EXPECT_EQ(test().output, "连接正常，凭证有效。\n");
  keep("wrong");
  EXPECT_THAT(test().errors, AllOf(HasSubstr("获取 token 失败"), Not(HasSubstr("wrong"))));
  EXPECT_EQ(test().status, 1);
  EXPECT_THAT(run({"doctor"}).output, HasSubstr("nomely bot pair"));
  EXPECT_THAT(run({"bot"}).output, HasSubstr("没有在运行"));
  EXPECT_EQ(run({"config", "set", "feishu.enabled", "false"}).status, 0);
  EXPECT_THAT(run({"bot", "pair"}).errors, HasSubstr("没有启用"));
  EXPECT_THAT(run({"doctor"}).output, HasSubstr("一切正常"));
}

}  // namespace
}  // namespace nomely::test
