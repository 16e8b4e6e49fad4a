#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>

#include "Feishu/Connection/ConnectionStatus.h"
#include "Feishu/Connection/FrameSender.h"
#include "Feishu/Connection/IncomingFrames.h"
#include "Feishu/FeishuAccount.h"
#include "Feishu/Protocol/FeishuAPI.h"
#include "Platform/Concurrency/QueueTimers.h"
#include "Platform/Concurrency/SerialQueue.h"
#include "Platform/Concurrency/Timers.h"
#include "Platform/Network/WebSocketClient.h"

namespace nomely {

// Keeps one WebSocket to the platform open while it is started: finds the endpoint, opens it, sends
// pings, hands over what comes, and opens it anew when it has ended. Calls return at once and may
// come from any thread; the work is done on `queue`, and what blocks on a thread for each attempt.
class FeishuConnection {
 public:
  static constexpr std::int64_t mostAttempts = 6;  // failures in a row

  struct Network {
    FeishuAPI::Platform platform;
    WebSocketClient& webSockets;
    Timers& timers;
  };

  // What is referred to must outlive it; `account` is changed by `updateConfig`.
  FeishuConnection(FeishuAccount& account, const Network& network, SerialQueue& queue,
                   FeishuEvents& events);
  // Stops, and waits for the threads. Not on the queue.
  ~FeishuConnection();
  FeishuConnection(const FeishuConnection&) = delete;
  FeishuConnection& operator=(const FeishuConnection&) = delete;

  // Called with the present status at once, and with each later one, on the queue.
  void setStatusObserver(std::function<void(const ConnectionStatus&)> observer);

  // Does nothing when the settings don't enable it or it has been started.
  void start();
  void stop();
  // A sender's right takes effect at once; other changes open the connection anew, or end it.
  void updateConfig(const FeishuConfig& config);

  [[nodiscard]] ConnectionStatus currentStatus() const;

 private:
  // From the request for the endpoint to the end of its WebSocket.
  struct Attempt;

  void startNow();
  void stopNow();
  void connect();
  void failNow(ConnectionStatus status);
  void scheduleReconnect();
  void handleDisconnect();
  void ping(const Attempt& attempt, std::chrono::milliseconds interval);
  void setStatus(ConnectionStatus status);

  // On the attempt's thread.
  void run(Attempt& attempt, const std::stop_token& stop);
  void receive(Attempt& attempt, WebSocket& socket, const std::stop_token& stop);
  // Runs `body` on the queue, unless another attempt has taken this one's place; false then.
  template <typename Body>
  bool ifCurrent(const Attempt& attempt, Body body);
  // The same for an attempt that has failed.
  void fail(const Attempt& attempt, ConnectionStatus status);
  void lose(const Attempt& attempt, const std::string& why);

  FeishuAccount& account_;
  const Network network_;
  SerialQueue& queue_;
  const std::shared_ptr<FrameSender> sender_ = std::make_shared<FrameSender>();

  mutable std::mutex statusMutex_;
  ConnectionStatus status_;  // changes on the queue

  // On the queue alone.
  IncomingFrames incoming_;
  std::function<void(const ConnectionStatus&)> observer_;
  bool isStarted_ = false;
  std::list<Attempt> attempts_;
  Attempt* current_ = nullptr;
  std::int64_t failures_ = 0;  // in a row
  std::chrono::milliseconds pingInterval_ = std::chrono::seconds(30);
  std::int32_t serviceID_ = 0;
  QueueTimers timers_;
  Timers::Timer pingTimer_;
  Timers::Timer reconnectTimer_;
};

}  // namespace nomely
