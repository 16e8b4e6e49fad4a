#include "App/LockableSecrets.h"
#include "App/ResidentBot.h"
#include "Feishu/Conversation/BotFixture.h"
#include "Platform/Concurrency/RunLoop.h"
#include "Support/Deadline.h"

namespace nomely::test {
namespace {

using Kind = ConnectionStatus::Kind;
using testing::Contains;
using namespace std::chrono_literals;

class ResidentBotTest : public BotTest {
 protected:
  ResidentBotTest() {
    const FeishuConfig config = platform.config();
    settings.set("feishu.appId", config.appId);
    settings.set("feishu.enabled", "true");
    keep(config.appSecret);
    resident.onNotice = [this](const std::string& notice) { notices.push_back(notice); };
    resident.onStatus = [this](const ConnectionStatus& status) { statuses.push_back(status.text); };
  }

  void keep(const std::string& secret) { (void)settings.setSecret("feishu", secret); }

  // Lets time pass, a step after the other, until it holds.
  void awaitWhileTimePasses(const std::function<bool()>& condition,
                            std::chrono::seconds step = 1s) {
    const auto deadline = std::chrono::steady_clock::now() + longestWait;
    while (!loop.runUntil(condition, 20ms)) {
      ASSERT_LT(std::chrono::steady_clock::now(), deadline) << resident.status().json();
      timers.advance(step);
    }
  }
  void await(Kind kind) {
    awaitWhileTimePasses([&] { return resident.status().connection.kind == kind; });
  }
  [[nodiscard]] std::optional<BotStatus> saved() const {
    return BotStatus::read(BotStatus::folder(environment, folder.path()), context.files);
  }

  Environment environment{{{"HOME", (folder.path() / "home").string()},
                           {"TMPDIR", folder.path().string()},
                           {"NOMELY_FEISHU_ROOT", platform.root()}}};
  RunLoop loop;
  LockableSecrets backend;
  AppSettings settings{context, backend, AppSettings::Source::files};
  std::vector<std::string> notices;
  std::vector<std::string> statuses;
  ResidentBot resident{{.environment = environment,
                        .memos = memos,
                        .settings = settings,
                        .http = *http,
                        .webSockets = *sockets,
                        .timers = timers,
                        .jobs = jobs,
                        .executor = loop}};
};

TEST_F(ResidentBotTest, ALockedKeyringIsWaitedFor) {
  backend.isLocked = true;
  resident.start();
  await(Kind::error);
  EXPECT_THAT(statuses, ElementsAre(AllOf(HasSubstr("拿不到机器人的密钥"), HasSubstr("锁着"))));
  EXPECT_THAT(notices, IsEmpty()) << "nothing is missing";
  backend.isLocked = false;
  await(Kind::connected);
  EXPECT_THAT(notices, ElementsAre(HasSubstr("nomely bot pair")));
  platform.send(phone::text("om_1", "早上好"));
  platform.awaitAck("om_1");
  awaitWhileTimePasses([&] { return resident.status().recorded == 1; });
  awaitWhileTimePasses([&] { return saved() && saved()->recorded == 1; });
  EXPECT_EQ(saved()->connection.kind, Kind::connected);
}

TEST_F(ResidentBotTest, WithoutANetworkItBeginsAgainEveryQuarterOfAnHour) {
  platform.fail(FeishuPlatform::Call::endpoint, {.status = 502}, 7);
  resident.start();
  awaitWhileTimePasses(
      [&] { return resident.status().connection.text == ConnectionStatus::gaveUp; }, 10s);
  EXPECT_EQ(platform.calls(FeishuPlatform::Call::endpoint), 7U);
  const Moment gaveUpAt = clock.now();
  awaitWhileTimePasses([&] { return resident.status().connection.kind == Kind::connected; }, 10s);
  EXPECT_GE(clock.now() - gaveUpAt, ResidentBot::retryAfterGivingUp);
}

TEST_F(ResidentBotTest, FollowsTheSettingsAndTheSecret) {
  AppSettings elsewhere(context, backend, AppSettings::Source::files);
  resident.start();
  await(Kind::connected);
  elsewhere.set("feishu.enabled", "false");
  await(Kind::disconnected);
  EXPECT_THAT(notices, Contains(HasSubstr("没有启用")));
  elsewhere.set("feishu.enabled", "true");
  await(Kind::connected);

  platform.setSecret("changed");
  platform.awaitConnection(2)->cut();
  await(Kind::error);
  keep("changed");
  await(Kind::connected);

  // A right given elsewhere holds at once, on the same connection.
  (void)platform.awaitConnection(3);
  elsewhere.set("feishu.allowedOpenID", "ou_somebody");
  awaitWhileTimePasses([&] { return settings.feishu().allowedOpenID == "ou_somebody"; });
  awaitWhileTimePasses([&] {
    const std::string id = "om_" + std::to_string(clock.now().time_since_epoch().count());
    const std::int64_t recorded = resident.status().recorded;
    platform.send(phone::text(id, id));
    platform.awaitAck(id);
    (void)loop.runUntil([&] { return resident.status().recorded > recorded; }, 50ms);
    return resident.status().recorded == recorded;
  });
  EXPECT_EQ(platform.connections(), 3U);
}

}  // namespace
}  // namespace nomely::test
