#include <thread>

#include "Feishu/Conversation/BotFixture.h"
#include "Support/Deadline.h"

namespace nomely::test {
namespace {

using Call = FeishuPlatform::Call;

class FeishuRepliesTest : public BotTest {
 protected:
  FeishuReplies replies{bot, account, *log};
};

TEST_F(FeishuRepliesTest, TheTokenIsRenewedFiveMinutesBeforeItsEnd) {
  const auto fetched = [&] {
    (void)replies.token({});
    return platform.calls(Call::token);
  };
  EXPECT_EQ(fetched(), 1);
  clock.advance(std::chrono::seconds(7200 - 301));
  EXPECT_EQ(fetched(), 1);
  clock.advance(std::chrono::seconds(1));
  EXPECT_EQ(fetched(), 2);
  platform.setSecret("secret-2");
  account.set(platform.config());
  platform.fail(Call::token, {.body = R"({"code":0,"tenant_access_token":"t","expire":200})"});
  EXPECT_EQ(fetched(), 3);
  EXPECT_EQ(fetched(), 4);
}

TEST_F(FeishuRepliesTest, ThoseWhoNeedATokenAtOnceShareOneRequest) {
  std::promise<void> release;
  platform.fail(Call::token, {.takeOver = [&](int) { inTime(release); }});
  std::atomic<int> failed = 0;
  {
    std::vector<std::jthread> callers;
    for (int i = 0; i < 8; ++i)
      callers.push_back(waitingThread([&] {
        try {
          (void)replies.token({});
        } catch (const HttpError&) {
          ++failed;
        }
      }));
    release.set_value();
  }
  EXPECT_EQ(failed, 8);
  EXPECT_EQ(platform.calls(Call::token), 1);
}

TEST_F(FeishuRepliesTest, ReactionsAndRepliesGoOutOnceAndAreLogged) {
  replies.reactThumbsUp("om_1");
  replies.reactCry("om_1");
  replies.reactThumbsUp("");
  platform.awaitReaction("om_1", "THUMBSUP");
  platform.awaitReaction("om_1", "CRY");
  platform.fail(Call::reply, {.status = 400});
  replies.replyMessage("om_2", {"丢", "二", "三\n\"\xFF\""});
  platform.awaitReply("om_2", 2);
  EXPECT_THAT(platform.replies("om_2"), ElementsAre("二", "三\n\"�\""));
  // What did not go out at all ends the reply.
  platform.fail(Call::reply, {.body = "{}", .manner = LoopbackServer::Manner::cutOff});
  replies.replyMessage("om_3", {"四", "五"});
  platform.awaitCalls(Call::reply, 4);
  replies.replyMessage("om_4", {"六"});
  platform.awaitReply("om_4");
  EXPECT_THAT(logged(), ElementsAre("👍 已记录", "😢 记录失败", "丢", "二", "三\n\"�\"", "四", "六"));
  EXPECT_THAT(platform.complaints(), testing::IsEmpty());
}

TEST_F(FeishuRepliesTest, TheEndWaitsForNoPlatform) {
  platform.fail(Call::reaction, {.manner = LoopbackServer::Manner::hanging}, 10);
  {
    FeishuReplies ending(bot, account, *log);
    for (int i = 0; i < 10; ++i) ending.reactThumbsUp("om_1");
    platform.awaitCalls(Call::reaction, 2);
  }
  EXPECT_LT(platform.calls(Call::reaction), 10);
}

}  // namespace
}  // namespace nomely::test
