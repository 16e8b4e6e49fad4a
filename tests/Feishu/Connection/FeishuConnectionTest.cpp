#include "Feishu/Connection/FeishuConnection.h"
#include "Feishu/Platform/FeishuPlatform.h"
#include "Platform/System/Log.h"
#include "Support/Deadline.h"
#include "Support/ManualTimers.h"
#include "Support/Matchers.h"

namespace nomely::test {
namespace {

using namespace std::chrono_literals;
using Kind = ConnectionStatus::Kind;
using Call = FeishuPlatform::Call;
using Manner = LoopbackServer::Manner;

// Grows on the queue, awaited by the test.
class Lines {
 public:
  void add(std::string line) {
    const std::lock_guard lock(mutex_);
    lines_.push_back(std::move(line));
    changed_.notify_all();
  }
  // The `count` that come after those of the last call.
  std::vector<std::string> take(std::size_t count) {
    std::unique_lock lock(mutex_);
    if (!changed_.wait_for(lock, longestWait, [&] { return lines_.size() >= count; }))
      throw std::runtime_error("no line came in time");
    const auto end = lines_.begin() + static_cast<std::ptrdiff_t>(count);
    std::vector<std::string> taken(lines_.begin(), end);
    lines_.erase(lines_.begin(), end);
    return taken;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::string> lines_;
};

std::string lineOf(const ConnectionStatus& status) {
  switch (status.kind) {
    case Kind::error:
      return status.text;
    case Kind::disconnected:
      return "disconnected";
    case Kind::connecting:
      return "connecting";
    case Kind::connected:
      return "connected";
  }
  return {};
}

// Acknowledges what does not say "later".
class Events final : public FeishuEvents {
 public:
  void handleEventPayload(const std::string& payload, const Acknowledge& acknowledge) override {
    if (payload == "throws") throw std::runtime_error("of a text");
    if (payload == "later")
      later = acknowledge;
    else
      acknowledge();
    payloads.add(payload);
  }
  Lines payloads;
  Acknowledge later;
};

class FeishuConnectionTest : public testing::Test {
 protected:
  FeishuConnectionTest() {
    connection->setStatusObserver(
        [this](const ConnectionStatus& status) { statuses.add(lineOf(status)); });
    EXPECT_THAT(statuses.take(1), ElementsAre("disconnected"));
  }
  void connectedTo(std::size_t count) {
    platform.awaitPings(count);
    EXPECT_THAT(statuses.take(2), ElementsAre("connecting", "connected"));
  }
  // Until what has been posted so far is done.
  void drain() {
    queue.sync([] {});
  }

  FeishuPlatform platform;
  ManualClock clock;
  ManualTimers timers{clock};
  std::unique_ptr<HttpClient> http = makeHttpClient();
  std::unique_ptr<WebSocketClient> webSockets = makeWebSocketClient();
  FeishuAccount account{platform.config()};
  Lines statuses;
  Events events;
  SerialQueue queue{"com.nomely.feishu"};
  std::unique_ptr<FeishuConnection> connection = std::make_unique<FeishuConnection>(
      account, FeishuConnection::Network{{*http, platform.root()}, *webSockets, timers}, queue,
      events);
};

TEST_F(FeishuConnectionTest, SixFailuresInARowAreTheLast) {
  platform.fail(Call::endpoint, {.status = 500}, 7);
  connection->start();
  const std::string failed = "连接失败：飞书 HTTP 错误 500";
  EXPECT_THAT(statuses.take(2), ElementsAre("connecting", failed));
  for (const std::chrono::milliseconds delay : {3s, 6s, 12s, 24s, 48s, 60s}) {
    drain();
    timers.advance(delay - 1ms);
    ASSERT_EQ(timers.waiting(), 1U) << delay.count();
    timers.advance(1ms);
    EXPECT_THAT(statuses.take(2), ElementsAre("connecting", failed));
  }
  EXPECT_THAT(statuses.take(1), ElementsAre(ConnectionStatus::gaveUp));
  connection->start();
  drain();
  EXPECT_EQ(timers.waiting(), 0U);
  EXPECT_EQ(platform.calls(Call::endpoint), 7U);
  EXPECT_EQ(connection->currentStatus(), (ConnectionStatus{Kind::error, ConnectionStatus::gaveUp}));

  connection->stop();
  connection->start();
  EXPECT_THAT(statuses.take(3), ElementsAre("disconnected", "connecting", "connected"));
}

TEST_F(FeishuConnectionTest, AnOpeningEndsTheCountAndACutIsMended) {
  platform.fail(Call::endpoint, {.body = "{"}, 2);
  connection->start();
  static_cast<void>(statuses.take(2));
  for (const auto delay : {3s, 6s}) {
    drain();
    timers.advance(delay);
    static_cast<void>(statuses.take(2));
  }
  platform.awaitPings(1);
  platform.send(PhoneMessage("om_1", "later"));
  EXPECT_THAT(events.payloads.take(1), ElementsAre("later"));
  platform.cut();
  EXPECT_THAT(statuses.take(1), ElementsAre("disconnected"));
  events.later();  // while there is no connection: it comes to nothing
  drain();
  EXPECT_EQ(timers.waiting(), 1U) << "the pings have ended";
  timers.advance(3s);
  connectedTo(2);
  events.later();
  platform.awaitAck("om_1");
  EXPECT_THAT(platform.complaints(), IsEmpty());
}

TEST_F(FeishuConnectionTest, WhatFailsAndHow) {
  const std::string tls = "wss" + platform.root().substr(4) + "/ws";
  const std::string plain = "ws" + platform.root().substr(4);
  const auto at = [](const std::string& url) {
    return LoopbackServer::Answer{.body = R"({"code":0,"data":{"URL":")" + url + "\"}}"};
  };
  testing::internal::CaptureStderr();
  Log::setEcho(Log::Echo::everything);
  for (const auto& [answer, status] : std::vector<std::pair<LoopbackServer::Answer, std::string>>{
           {{.status = 404}, "连接失败：飞书 HTTP 错误 404"},
           {{.body = "{", .manner = Manner::cutOff, .saidLength = 9}, "连接失败："},
           {at("no address"), "endpoint 返回无效 URL"},
           {at("https://127.0.0.1/?ticket=hidden"), "endpoint 返回无效 URL"},
           {at("ws://192.0.2.1/?ticket=hidden"), "endpoint 返回无效 URL"},
           {at(tls + "?ticket=hidden"), "disconnected"},
           {at(plain + "/nothing?ticket=hidden"), "disconnected"}}) {
    SCOPED_TRACE(answer.body);
    platform.fail(Call::endpoint, answer);
    connection->start();
    EXPECT_THAT(statuses.take(2), ElementsAre("connecting", HasSubstr(status)));
    drain();
    EXPECT_EQ(timers.waiting(), 1U) << "it is tried again";
    connection->stop();
    static_cast<void>(statuses.take(1));
  }
  Log::setEcho(Log::Echo::errors);
  const std::string log = testing::internal::GetCapturedStderr();
  EXPECT_THAT(log,
              AllOf(HasSubstr("收消息出错："), Not(HasSubstr("hidden")), Not(HasSubstr("secret"))));
}

TEST_F(FeishuConnectionTest, StartedTwiceIsStartedOnceAndStopSaysGoodbye) {
  connection->start();
  connection->start();
  connectedTo(1);
  connection->start();
  drain();
  EXPECT_EQ(platform.connections(), 1U);
  connection->stop();
  EXPECT_EQ(platform.awaitConnection()->awaitCloseCode(), 1001);
  EXPECT_THAT(statuses.take(1), ElementsAre("disconnected"));
  EXPECT_EQ(timers.waiting(), 0U);

  // What blocks ends with it, and its late outcome goes nowhere.
  platform.fail(Call::endpoint, {.manner = Manner::hanging});
  connection->start();
  platform.awaitCalls(Call::endpoint, 2);
  connection->stop();
  connection->start();
  EXPECT_THAT(statuses.take(4),
              ElementsAre("connecting", "disconnected", "connecting", "connected"));
  // Timers that are due while it stops come too late.
  const auto stopAsTimersEnd = [&](std::chrono::seconds delay) {
    queue.sync([&] {
      connection->stop();
      timers.advance(delay);
    });
    EXPECT_THAT(statuses.take(1), ElementsAre("disconnected"));
    drain();
    EXPECT_EQ(timers.waiting(), 0U);
  };
  platform.awaitPings(2);
  stopAsTimersEnd(30s);
  platform.fail(Call::endpoint, {.status = 500});
  connection->start();
  static_cast<void>(statuses.take(2));
  drain();
  stopAsTimersEnd(3s);
  EXPECT_EQ(platform.calls(Call::endpoint), 4U);

  connection->start();
  platform.awaitPings(3);
  platform.awaitConnection(3)->freeze();
  connection.reset();
  EXPECT_EQ(timers.waiting(), 0U);
}

TEST_F(FeishuConnectionTest, PingsGoOutAtTheIntervalThatThePlatformAsksFor) {
  struct Case {
    std::optional<int> said;
    std::chrono::milliseconds interval;
  };
  std::size_t pings = 0;
  for (const Case& test : std::vector<Case>{{std::nullopt, 30s},
                                            {120, 120s},
                                            {std::nullopt, 120s},
                                            {-5, 1s},
                                            {2'000'000'000, 24h}}) {
    SCOPED_TRACE(test.interval.count());
    platform.fail(Call::endpoint, platform.endpoint(test.said));
    connection->start();
    connectedTo(++pings);
    for (int i = 0; i < 2; ++i) {
      drain();
      timers.advance(test.interval - 1ms);
      EXPECT_EQ(timers.waiting(), 1U);
      timers.advance(1ms);
      platform.awaitPings(++pings);
    }
    EXPECT_EQ(platform.pings(), pings);
    connection->stop();
    static_cast<void>(statuses.take(1));
  }
  EXPECT_THAT(platform.complaints(), IsEmpty());
}

TEST_F(FeishuConnectionTest, WhatAChangeOfSettingsDoes) {
  using Change = void (*)(FeishuConfig&);
  struct Case {
    const char* name;
    Change change;
    std::vector<std::string> statuses;
  };
  connection->start();
  connectedTo(1);
  FeishuConfig config = platform.config();
  for (const Case& test :
       std::vector<Case>{{"nothing", [](FeishuConfig&) {}, {}},
                         {"a sender", [](FeishuConfig& c) { c.allowedOpenID = "ou_me"; }, {}},
                         {"off", [](FeishuConfig& c) { c.enabled = false; }, {"disconnected"}},
                         {"another secret while off",
                          [](FeishuConfig& c) { c.appSecret = "x"; },
                          {"disconnected"}},
                         {"on",
                          [](FeishuConfig& c) { c.enabled = true; },
                          {"disconnected", "connecting", "连接失败：飞书 API 错误 code=514"}},
                         {"the right secret",
                          [](FeishuConfig& c) { c.appSecret = "secret-1"; },
                          {"disconnected", "connecting", "connected"}},
                         {"no id", [](FeishuConfig& c) { c.appId.clear(); }, {"disconnected"}}}) {
    SCOPED_TRACE(test.name);
    test.change(config);
    connection->updateConfig(config);
    EXPECT_EQ(statuses.take(test.statuses.size()), test.statuses);
    drain();
    EXPECT_EQ(account.config(), config);
  }
  connection->start();
  EXPECT_THAT(statuses.take(1), ElementsAre(ConnectionStatus::notConfigured));
  static_cast<void>(platform.awaitConnection(2));
  EXPECT_EQ(platform.connections(), 2U);
}

TEST_F(FeishuConnectionTest, WhichFramesAreEvents) {
  connection->start();
  connectedTo(1);
  const auto frame = [](std::string payload, std::vector<FeishuHeader> more) {
    FeishuFrame made = FeishuPlatform::frameOf("a", std::move(payload));
    made.headers.resize(2);
    made.headers.insert(made.headers.end(), more.begin(), more.end());
    return made;
  };
  const auto peer = platform.awaitConnection();
  const auto send = [&](const FeishuFrame& made) { peer->sendBinary(made.encode()); };
  testing::internal::CaptureStderr();
  // What is no event first: then the acknowledged ones show that nothing of it was handed over.
  peer->sendRaw("\x82\x01\x08");  // a message of one byte, a frame cut off
  FeishuFrame control = frame("control", {});
  control.method = 0;
  send(control);
  FeishuFrame card = frame("card", {});
  card.headers[0].value = "card";
  send(card);
  for (const auto& [sum, seq] : std::vector<std::pair<std::string, std::string>>{
           {"2", "2"}, {"2147483648", "0"}, {"2", "-1"}})
    send(frame("piece", {{"sum", sum}, {"seq", seq}}));
  send(frame("", {}));
  send(frame("throws", {}));
  send(frame("1", {}));
  send(frame("2", {{"sum", "1"}, {"seq", "5"}}));
  send(frame("3", {{"sum", "two"}, {"seq", "x"}}));
  send(frame("4", {{"sum", "99999999999999999999"}}));
  peer->sendText(frame("5", {}).encode());
  EXPECT_THAT(events.payloads.take(5), ElementsAre("1", "2", "3", "4", "5"));
  platform.send(PhoneMessage("om_1", "in fragments, with some text"), {4, {3, 1, 1, 0, 2}});
  platform.awaitAck("om_1");
  EXPECT_THAT(events.payloads.take(1), ElementsAre("in fragments, with some text"));
  EXPECT_EQ(platform.acks("om_1"), 1U);
  platform.send(PhoneMessage("om_2", "pieces are missing"), {3, {0, 2}});
  platform.send(PhoneMessage("om_3", "whole"));
  platform.awaitAck("om_3");
  EXPECT_EQ(platform.acks("om_2"), 0U);
  platform.redeliver("om_2");
  platform.awaitAck("om_2");
  EXPECT_EQ(platform.acks(""), 5U) << "of the frames that no message sent";

  const std::string log = testing::internal::GetCapturedStderr();
  // What a text's parser said of it stays out.
  EXPECT_THAT(log, AllOf(HasSubstr("Frame 解码失败，丢弃"), HasSubstr("sum=2147483648"),
                         HasSubstr("事件没有内容，不确认"), HasSubstr("处理事件失败\n")));
}

}  // namespace
}  // namespace nomely::test
