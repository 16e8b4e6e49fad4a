#include <algorithm>
#include <array>
#include <functional>

#include <poll.h>

#include "Platform/Cancellation.h"
#include "Platform/Network/WebSocket/WebSocketOpening.h"
#include "Platform/Network/WebSocket/WslaySocket.h"
#include "Platform/Network/WithoutPipeSignal.h"
#include "Platform/Text/Ascii.h"

namespace nomely {
namespace {

using Kind = WebSocketError::Kind;
using Time = CurlConnection::Time;

Kind kindOf(HttpError::Kind kind) {
  switch (kind) {
    case HttpError::Kind::badURL:
      return Kind::badURL;
    case HttpError::Kind::refused:
      return Kind::refused;
    case HttpError::Kind::timeout:
      return Kind::timeout;
    case HttpError::Kind::notHttp:
      return Kind::handshake;
    default:
      return Kind::connection;
  }
}

// The URL of the HTTP server that is asked to speak WebSocket: "wss://host/ws" → "https://host/ws".
std::string underlying(const std::string& url) {
  const std::size_t end = std::min(url.find(':'), url.size());
  const std::string scheme = loweredAscii(std::string_view(url).substr(0, end));
  if (scheme == "wss") return "https" + url.substr(end);
  if (scheme == "ws") return "http" + url.substr(end);
  if (url.find("://") == std::string::npos)
    throw WebSocketError(Kind::badURL, "长连接的地址写法不对，请检查地址");
  throw WebSocketError(Kind::refused, "长连接的地址要以 wss:// 开头，请检查地址");
}

// Agrees with the server on a WebSocket. Gives what has come after that.
class Opener {
 public:
  Opener(const CurlConnection& connection, Time limit, const std::stop_token& stop)
      : connection_(connection), limit_(limit), stop_(stop) {}

  std::string open(const HttpTarget& target) {
    const WithoutPipeSignal quiet;
    const WebSocketOpening opening(target);
    send(opening.request());
    std::string received;
    for (;;) {
      receiveInto(received);
      if (const auto end = opening.agreement(received)) return received.substr(*end);
    }
  }

 private:
  void send(std::string_view bytes) {
    while (!bytes.empty()) {
      const auto [count, code] = connection_.send(bytes);
      bytes.remove_prefix(count);
      awaitUnlessMoved(code, POLLOUT);
    }
  }

  void receiveInto(std::string& received) {
    std::array<char, 4096> buffer{};
    const auto [count, code] = connection_.receive(buffer);
    received.append(buffer.data(), count);
    awaitUnlessMoved(code, POLLIN);
  }

  void awaitUnlessMoved(CURLcode code, short events) {
    throwIfStopped(stop_);
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(limit_ - Time::clock::now());
    if (left.count() <= 0) throw connection_.failure(CURLE_OPERATION_TIMEDOUT);
    if (code == CURLE_OK) return;
    if (code != CURLE_AGAIN) throw connection_.failure(code);
    std::array<pollfd, 2> waited{
        {{connection_.socket(), events, 0}, {wakeUp_.descriptor(), POLLIN, 0}}};
    ::poll(waited.data(), waited.size(), static_cast<int>(left.count()));
  }

  const CurlConnection& connection_;
  const Time limit_;
  const std::stop_token& stop_;
  const WakeUp wakeUp_;
  const std::stop_callback<std::function<void()>> wake_{stop_, [this] { wakeUp_.wake(); }};
};

class CurlWebSocketClient final : public WebSocketClient {
 public:
  explicit CurlWebSocketClient(NetworkOptions options) : options_(std::move(options)) {}

  std::shared_ptr<WebSocket> connect(const std::string& url, const std::stop_token& stop) override {
    constexpr std::chrono::minutes patience(1);
    throwIfStopped(stop);
    try {
      const Time limit = Time::clock::now() + patience;
      const std::string http = underlying(url);
      const HttpTarget target = HttpTarget::of(http);
      auto connection = std::make_unique<CurlConnection>(http, target, options_, limit, stop);
      std::string early = Opener(*connection, limit, stop).open(target);
      return std::make_shared<WslaySocket>(std::move(connection), std::move(early), target.host);
    } catch (const HttpError& error) {
      throw WebSocketError(kindOf(error.kind()), error.what());
    }
  }

 private:
  const NetworkOptions options_;
};

}  // namespace

std::unique_ptr<WebSocketClient> makeWebSocketClient(const NetworkOptions& options) {
  return std::make_unique<CurlWebSocketClient>(options);
}

}  // namespace nomely
