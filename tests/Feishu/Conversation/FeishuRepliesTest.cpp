#include <thread>

#include <gmock/gmock.h>

#include "Feishu/Conversation/BotFixture.h"
#include "Support/Deadline.h"

namespace nomely::test {
namespace {

using Call = FeishuPlatform::Call;
using testing::ElementsAre;

class FeishuRepliesTest : public BotTest {
 protected:
  FeishuReplies replies{bot, account, *log};
};

TEST_F(FeishuRepliesTest, TheTokenIsRenewedWhenItHasToBe) {
  struct Step {
    const char* name;
    std::function<void()> before;
    std::size_t fetched;
  };
  const auto pass = [&](int seconds) {
    return [this, seconds] { clock.advance(std::chrono::seconds(seconds)); };
  };
  const auto secret = [&](const char* changed) {
    return [this, changed] {
      platform.setSecret(changed);
      account.set(platform.config());
    };
  };
  for (const Step& step : std::vector<Step>{{"first", [] {}, 1},
                                            {"in time", pass(7200 - 301), 1},
                                            {"five minutes before its end", pass(1), 2},
                                            {"another secret", secret("secret-2"), 3},
                                            {"the same again", secret("secret-2"), 3},
                                            {"short-lived",
                                             [&] {
                                               platform.setTokenLifetime(200);
                                               clock.advance(std::chrono::hours(2));
                                             },
                                             4},
                                            {"short-lived again", [] {}, 5}}) {
    step.before();
    (void)replies.token({});
    EXPECT_EQ(platform.calls(Call::token), step.fetched) << step.name;
  }
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
  replies.replyMessage("om_2", {"丢", "二", "三"});
  EXPECT_EQ(platform.awaitReply("om_2", 2), "三");
  EXPECT_THAT(platform.replies("om_2"), ElementsAre("二", "三"));
  EXPECT_THAT(logged(), ElementsAre("👍 已记录", "😢 记录失败", "丢", "二", "三"));
  EXPECT_THAT(platform.complaints(), testing::IsEmpty());
}

TEST_F(FeishuRepliesTest, AFailureEndsAReplyAndNothingElse) {
  platform.fail(Call::reply, {.body = "{}", .manner = LoopbackServer::Manner::cutOff});
  replies.replyMessage("om_1", {"一", "二"});
  platform.awaitCalls(Call::reply, 1);
  replies.replyMessage("om_2", {"三"});
  EXPECT_EQ(platform.awaitReply("om_2"), "三");
  EXPECT_THAT(platform.replies("om_1"), testing::IsEmpty());
  EXPECT_THAT(logged(), ElementsAre("一", "三"));
}

TEST_F(FeishuRepliesTest, TheEndWaitsForNoPlatform) {
  platform.fail(Call::reaction, {.manner = LoopbackServer::Manner::hanging}, 10);
  {
    FeishuReplies ending(bot, account, *log);
    for (int i = 0; i < 10; ++i) ending.reactThumbsUp("om_1");
    platform.awaitCalls(Call::reaction, 4);
  }
  EXPECT_LT(platform.calls(Call::reaction), 10);
}

}  // namespace
}  // namespace nomely::test
