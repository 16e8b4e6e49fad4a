#include "Feishu/Connection/FeishuConnection.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <system_error>
#include <thread>
#include <utility>

#include "Platform/Cancellation.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

using Kind = ConnectionStatus::Kind;
using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr std::uint16_t goingAway = 1001;
constexpr const char* failed = "连接失败：";

// What the platform says, within reason: neither a flood of pings nor none at all.
milliseconds pingIntervalOf(double said) {
  constexpr double least = 1;
  constexpr double most = 24 * 60 * 60;
  return std::chrono::duration_cast<milliseconds>(
      std::chrono::duration<double>(std::clamp(said, least, most)));
}

seconds reconnectDelay(std::int64_t failures) {
  constexpr std::int64_t longest = 60;
  return seconds(std::min(std::int64_t{3} << failures, longest));
}

bool shouldRun(const FeishuConfig& config) {
  return config.enabled && config.isConfigured();
}

}  // namespace

struct FeishuConnection::Attempt {
  std::atomic<bool> hasEnded = false;
  std::jthread thread;
};

FeishuConnection::FeishuConnection(FeishuAccount& account, const Network& network,
                                   SerialQueue& queue, FeishuEvents& events)
    : account_(account),
      network_(network),
      queue_(queue),
      incoming_(events, sender_),
      timers_(network.timers, queue) {}

FeishuConnection::~FeishuConnection() {
  queue_.sync([this] {
    observer_ = nullptr;
    stopNow();
  });
  attempts_.clear();
}

void FeishuConnection::setStatusObserver(std::function<void(const ConnectionStatus&)> observer) {
  queue_.async([this, observer = std::move(observer)]() mutable {
    observer_ = std::move(observer);
    if (observer_) observer_(status_);
  });
}

void FeishuConnection::start() {
  queue_.async([this] { startNow(); });
}

void FeishuConnection::stop() {
  queue_.async([this] { stopNow(); });
}

void FeishuConnection::updateConfig(const FeishuConfig& config) {
  queue_.async([this, config] {
    const FeishuConfig old = account_.config();
    if (config == old) return;
    account_.set(config);
    if (shouldRun(config) == shouldRun(old) && config.appId == old.appId &&
        config.appSecret == old.appSecret)
      return;
    stopNow();
    if (shouldRun(config)) startNow();
  });
}

ConnectionStatus FeishuConnection::currentStatus() const {
  const std::lock_guard lock(statusMutex_);
  return status_;
}

void FeishuConnection::setStatus(ConnectionStatus status) {
  {
    const std::lock_guard lock(statusMutex_);
    status_ = std::move(status);
  }
  if (observer_) observer_(status_);
}

void FeishuConnection::startNow() {
  const FeishuConfig config = account_.config();
  if (!config.enabled) return;
  if (!config.isConfigured()) return setStatus({Kind::error, ConnectionStatus::notConfigured});
  if (std::exchange(isStarted_, true)) return;
  connect();
}

void FeishuConnection::stopNow() {
  isStarted_ = false;
  if (const auto socket = sender_->exchange(nullptr)) socket->close(goingAway);
  if (current_ != nullptr) current_->thread.request_stop();
  current_ = nullptr;
  pingTimer_ = nullptr;
  reconnectTimer_ = nullptr;
  failures_ = 0;
  setStatus({Kind::disconnected});
}

void FeishuConnection::connect() {
  setStatus({Kind::connecting});
  attempts_.remove_if([](const Attempt& attempt) { return attempt.hasEnded.load(); });
  Attempt& attempt = attempts_.emplace_back();
  current_ = &attempt;
  try {
    attempt.thread = std::jthread([this, &attempt](std::stop_token stop) {
      run(attempt, stop);
      attempt.hasEnded = true;
    });
  } catch (const std::system_error& error) {  // no thread to be had
    attempt.hasEnded = true;
    failNow({Kind::error, std::string(failed) + error.what()});
  }
}

void FeishuConnection::failNow(ConnectionStatus status) {
  current_ = nullptr;
  setStatus(std::move(status));
  scheduleReconnect();
}

void FeishuConnection::handleDisconnect() {
  sender_->exchange(nullptr);
  pingTimer_ = nullptr;
  failNow({Kind::disconnected});
}

void FeishuConnection::scheduleReconnect() {
  reconnectTimer_ = nullptr;
  if (failures_ >= mostAttempts) {
    Log::error(LogChannel::feishu, "连续 {} 次重连失败，停止重连", mostAttempts);
    return setStatus({Kind::error, ConnectionStatus::gaveUp});
  }
  const seconds delay = reconnectDelay(failures_++);
  Log::information(LogChannel::feishu, "{}秒后重连（第{}次，上限{}次）", delay.count(), failures_,
                   mostAttempts);
  reconnectTimer_ = timers_.after(delay, [this] {
    // It may have been on its way here when the timer went.
    if (isStarted_ && current_ == nullptr) connect();
  });
}

void FeishuConnection::ping(const Attempt& attempt, milliseconds interval) {
  if (current_ != &attempt) return;
  sender_->send({.service = serviceID_, .method = 0, .headers = {{"type", "ping"}}});
  pingTimer_ = timers_.after(interval, [this, &attempt, interval] { ping(attempt, interval); });
}

template <typename Body>
bool FeishuConnection::ifCurrent(const Attempt& attempt, Body body) {
  return queue_.sync([&] {
    if (current_ != &attempt) return false;
    body();
    return true;
  });
}

void FeishuConnection::fail(const Attempt& attempt, ConnectionStatus status) {
  ifCurrent(attempt, [&] { failNow(std::move(status)); });
}

void FeishuConnection::lose(const Attempt& attempt, const std::string& why) {
  ifCurrent(attempt, [&] {
    Log::error(LogChannel::feishu, "收消息出错：{}", why);
    handleDisconnect();
  });
}

void FeishuConnection::run(Attempt& attempt, const std::stop_token& stop) {
  const FeishuConfig config = account_.config();
  FeishuAPI::EndpointResult endpoint;
  try {
    endpoint = FeishuAPI::fetchEndpoint(network_.platform, config.appId, config.appSecret, stop);
  } catch (const CancellationError&) {
    return;
  } catch (const std::exception& error) {
    return fail(attempt, {Kind::error, std::string(failed) + error.what()});
  }
  const bool goesOn = ifCurrent(attempt, [&] {
    serviceID_ = endpoint.serviceID;
    if (endpoint.pingInterval) pingInterval_ = pingIntervalOf(*endpoint.pingInterval);
  });
  if (!goesOn) return;
  try {
    const std::shared_ptr<WebSocket> socket = network_.webSockets.connect(endpoint.url, stop);
    const bool isOpen = ifCurrent(attempt, [&] {
      sender_->exchange(socket);
      failures_ = 0;
      setStatus({Kind::connected});
      Log::information(LogChannel::feishu, "WebSocket 已连接，开始收消息");
      ping(attempt, pingInterval_);
    });
    if (isOpen) receive(attempt, *socket, stop);
  } catch (const CancellationError&) {
    return;
  } catch (const WebSocketError& error) {
    if (error.kind() == WebSocketError::Kind::badURL ||
        error.kind() == WebSocketError::Kind::refused)
      return fail(attempt, {Kind::error, "endpoint 返回无效 URL"});
    lose(attempt, error.what());
  } catch (const std::exception& error) {
    lose(attempt, error.what());
  }
}

void FeishuConnection::receive(Attempt& attempt, WebSocket& socket, const std::stop_token& stop) {
  // On this thread, so that what comes faster than it is worked on waits in the network.
  for (bool goesOn = true; goesOn;) {
    const WebSocket::Message message = socket.receive(stop);
    goesOn = ifCurrent(attempt, [&] { incoming_.handleIncomingData(message.bytes); });
  }
}

}  // namespace nomely
