#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <vector>

#include "Feishu/FeishuConfig.h"
#include "Feishu/Platform/PhoneMessage.h"
#include "Feishu/Protocol/FeishuFrame.h"
#include "Support/LoopbackServer.h"
#include "Support/WebSocketServer.h"

namespace nomely::test {

// The open platform on 127.0.0.1: hands out endpoint and token, delivers what a test has a person
// send, and records what the bot does. Safe on any thread; what is awaited throws when it does not
// happen in time.
//
//   FeishuPlatform platform;
//   platform.send(phone::text("om_1", "你好"));
//   platform.awaitAck("om_1");
//   platform.awaitReaction("om_1", "THUMBSUP");
//   EXPECT_THAT(platform.complaints(), IsEmpty());
class FeishuPlatform {
 public:
  // The requests that it answers.
  enum class Call { endpoint, token, reply, reaction, resource };

  // In how many fragments an event travels, and which of them are sent first in what order: {3, {2,
  // 0, 0}} repeats one and leaves one out. A redelivery sends all, in order.
  struct Pieces {
    std::size_t count = 1;
    std::vector<std::size_t> order = {};
  };

  FeishuPlatform();
  ~FeishuPlatform();
  FeishuPlatform(const FeishuPlatform&) = delete;
  FeishuPlatform& operator=(const FeishuPlatform&) = delete;

  // What NOMELY_FEISHU_ROOT has to say.
  [[nodiscard]] std::string root() const { return server_.url(); }
  // Settings with which a bot gets in.
  [[nodiscard]] FeishuConfig config() const {
    return locked(
        [&] { return FeishuConfig{.appId = "cli_test", .appSecret = secret_, .enabled = true}; });
  }
  // Once changed, the one before is refused.
  void setSecret(const std::string& secret) {
    locked([&] { secret_ = secret, tokens_.clear(); });
  }
  void setMedia(const std::string& key, const std::string& bytes) {
    locked([&] { media_[key] = bytes; });
  }
  // What was given so far is refused.
  void expireTokens() {
    locked([&] { tokens_.clear(); });
  }

  // Delivers over the open connection, or over the next one. A message is acknowledged or comes
  // again.
  void send(const PhoneMessage& message) { send(message, Pieces()); }
  void send(const PhoneMessage& message, Pieces pieces);
  // Once more, acknowledged or not.
  void redeliver(const std::string& id) { deliver({id}); }
  void redeliverUnacknowledged() { deliver(unacknowledged()); }
  // From here on by itself, that long after a delivery; also what was sent before.
  void redeliverAfter(std::chrono::milliseconds delay);

  // The next `times` requests of that kind get this answer, or none.
  void fail(Call call, const LoopbackServer::Answer& answer, std::size_t times = 1) {
    locked([&] { failures_[call] = {answer, times}; });
  }
  // The answer that leads to our WebSocket.
  [[nodiscard]] LoopbackServer::Answer endpoint(std::optional<int> pingInterval = {}) const;
  // Of the open connection.
  void cut();

  // The frame that delivers `payload` whole, for tests that change it.
  [[nodiscard]] static FeishuFrame frameOf(const std::string& id, std::string payload);

  [[nodiscard]] std::size_t acks(const std::string& id) const {
    return locked([&] { return record(id).acks; });
  }
  [[nodiscard]] std::size_t deliveries(const std::string& id) const {
    return locked([&] { return record(id).deliveries; });
  }
  [[nodiscard]] std::vector<std::string> unacknowledged() const;
  [[nodiscard]] std::vector<std::string> reactions(const std::string& id) const {
    return locked([&] { return record(id).reactions; });
  }
  [[nodiscard]] std::vector<std::string> replies(const std::string& id) const {
    return locked([&] { return record(id).replies; });
  }
  [[nodiscard]] std::size_t calls(Call call) const {
    return locked([&] { return calls_[call]; });
  }
  [[nodiscard]] std::size_t pings() const {
    return locked([&] { return pings_; });
  }
  // WebSockets opened so far.
  [[nodiscard]] std::size_t connections() const { return sockets_.count(); }
  // What the bot did that the platform does not understand.
  [[nodiscard]] std::vector<std::string> complaints() const {
    return locked([&] { return complaints_; });
  }

  void awaitAck(const std::string& id, std::size_t count = 1) const;
  void awaitReaction(const std::string& id, const std::string& emoji) const;
  std::string awaitReply(const std::string& id, std::size_t count = 1) const;
  void awaitCalls(Call call, std::size_t count) const;
  void awaitPings(std::size_t count) const;
  // Until no more than so many messages are unacknowledged, or that time is over.
  void awaitUnacknowledged(std::size_t atMost, std::chrono::milliseconds longest) const;
  // The `count`-th WebSocket, open or not by then.
  [[nodiscard]] std::shared_ptr<WebSocketPeer> awaitConnection(std::size_t count = 1) const {
    return sockets_.awaitPeer(count);
  }

  // Calls `tell` with a line about all that the bot does: "om_1: acknowledged".
  void observe(const std::function<void(const std::string&)>& tell) {
    locked([&] { tell_ = tell; });
  }

 private:
  using Time = std::chrono::steady_clock::time_point;
  struct Record {
    std::optional<PhoneMessage> message;  // absent for what the platform never sent
    Pieces pieces;
    std::size_t number = 0;  // in the order in which it was first sent
    std::size_t deliveries = 0;
    std::size_t acks = 0;
    Time delivered;
    std::vector<std::string> reactions;
    std::vector<std::string> replies;
  };
  struct Failure {
    LoopbackServer::Answer answer;
    std::size_t times = 0;
  };

  using Request = LoopbackServer::Request;
  using Answer = LoopbackServer::Answer;

  // What `act` gives, called with the lock held.
  template <typename Act>
  std::invoke_result_t<Act> locked(Act act) const {
    const std::lock_guard lock(mutex_);
    return act();
  }
  // What `usual` gives, unless this call is to fail.
  [[nodiscard]] Answer counted(Call call, const std::function<Answer()>& usual);
  [[nodiscard]] Answer endpointReply(const Request& request);
  [[nodiscard]] Answer tokenReply(const Request& request);
  // A request below a message's address: its id, and what follows that.
  [[nodiscard]] Answer messageReply(const std::string& id, const std::string& rest,
                                    const Request& request);
  [[nodiscard]] Answer resourceReply(std::string_view key);
  [[nodiscard]] bool isOurs(const Request& request, const char* id, const char* secret) const;

  void opened(const std::shared_ptr<WebSocketPeer>& peer);
  void received(WebSocketPeer& peer, const WebSocketFrame& frame);
  void acknowledged(const FeishuFrame& frame);
  void deliver(const std::vector<std::string>& ids);
  // The frames of the next delivery, with the lock held.
  [[nodiscard]] std::vector<std::string> framesOf(const std::string& id);
  void redeliverInTime(const std::stop_token& stop);

  [[nodiscard]] std::shared_ptr<WebSocketPeer> peer() const {
    return locked([&] { return peer_; });
  }
  void complain(const std::string& text);
  void tell(const std::string& line) const;
  template <typename Condition>
  void await(const std::string& what, Condition condition) const;
  [[nodiscard]] const Record& record(const std::string& id) const;

  mutable std::mutex mutex_;
  mutable std::condition_variable_any changed_;
  std::mutex delivering_;  // one event after the other
  std::function<void(const std::string&)> tell_;
  std::string secret_ = "secret-1";
  std::set<std::string> tokens_;
  std::map<std::string, std::string> media_;
  std::map<std::string, Record> records_;
  std::map<std::size_t, std::string> unacknowledged_;  // by number
  std::map<std::uint64_t, std::string> sent_;  // by the seqID of the delivery, to the message
  std::uint64_t nextSeqID_ = 1;
  std::size_t nextNumber_ = 1;
  mutable std::map<Call, std::size_t> calls_;
  std::map<Call, Failure> failures_;
  std::size_t pings_ = 0;
  std::vector<std::string> complaints_;
  std::chrono::milliseconds redeliverAfter_{0};
  std::shared_ptr<WebSocketPeer> peer_;
  LoopbackServer server_;
  WebSocketServer sockets_;
  std::jthread redelivering_;
};

}  // namespace nomely::test
