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

  struct Endpoint {
    std::string url = {};  // empty: our own
    std::optional<int> pingInterval = {};
  };

  FeishuPlatform();
  ~FeishuPlatform();
  FeishuPlatform(const FeishuPlatform&) = delete;
  FeishuPlatform& operator=(const FeishuPlatform&) = delete;

  // What NOMELY_FEISHU_ROOT has to say.
  [[nodiscard]] std::string root() const { return server_.url(); }
  // Settings with which a bot gets in.
  [[nodiscard]] FeishuConfig config() const;
  // Once changed, the one before is refused.
  void setSecret(std::string secret);
  void setMedia(const std::string& key, std::string bytes);
  void setEndpoint(Endpoint endpoint);
  void setTokenLifetime(std::optional<int> seconds);
  // What was given so far is refused.
  void expireTokens();

  // Delivers over the open connection, or over the next one. A message is acknowledged or comes
  // again.
  void send(const PhoneMessage& message) { send(message, Pieces()); }
  void send(const PhoneMessage& message, Pieces pieces);
  // Once more, acknowledged or not.
  void redeliver(const std::string& id);
  void redeliverUnacknowledged();
  // From here on by itself, that long after a delivery; also what was sent before.
  void redeliverAfter(std::chrono::milliseconds delay);

  // The next `times` requests of that kind get this answer, or none.
  void fail(Call call, LoopbackServer::Answer answer, std::size_t times = 1);
  // Of the open connection.
  void cut();
  void freeze();
  void sendRaw(std::string_view bytes);
  void sendFrame(const FeishuFrame& frame);
  void sendTextFrame(const FeishuFrame& frame);
  void sendClose(std::uint16_t code);

  // The frame that delivers `payload` whole, for tests that change it.
  [[nodiscard]] static FeishuFrame frameOf(const std::string& id, std::string payload);

  [[nodiscard]] std::size_t acks(const std::string& id) const;
  [[nodiscard]] std::size_t deliveries(const std::string& id) const;
  [[nodiscard]] std::vector<std::string> unacknowledged() const;
  [[nodiscard]] std::vector<std::string> reactions(const std::string& id) const;
  [[nodiscard]] std::vector<std::string> replies(const std::string& id) const;
  [[nodiscard]] std::size_t calls(Call call) const;
  [[nodiscard]] std::size_t pings() const;
  // WebSockets opened so far.
  [[nodiscard]] std::size_t connections() const { return sockets_.count(); }
  // What the bot did that the platform does not understand.
  [[nodiscard]] std::vector<std::string> complaints() const;

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
  void observe(std::function<void(const std::string&)> tell);

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
  void received(const WebSocketFrame& frame);
  void acknowledged(const FeishuFrame& frame);
  void deliver(const std::vector<std::string>& ids);
  // The frames of the next delivery, with the lock held.
  [[nodiscard]] std::vector<std::string> framesOf(const std::string& id);
  void redeliverInTime(const std::stop_token& stop);

  [[nodiscard]] std::shared_ptr<WebSocketPeer> peer() const;
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
  Endpoint endpoint_;
  std::optional<int> tokenLifetime_ = 7200;
  std::set<std::string> tokens_;
  std::map<std::string, std::string> media_;
  std::map<std::string, Record> records_;
  std::map<std::size_t, std::string> unacknowledged_;  // by number
  std::map<std::uint64_t, std::string> sent_;  // by the seqID of the delivery, to the message
  std::uint64_t nextSeqID_ = 1;
  std::size_t nextNumber_ = 1;
  std::map<Call, std::size_t> calls_;
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
