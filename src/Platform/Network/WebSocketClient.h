#pragma once

#include <cstdint>
#include <memory>
#include <stop_token>
#include <string>

#include "Platform/Error.h"
#include "Platform/Network/NetworkOptions.h"

namespace nomely {

// A WebSocket (RFC 6455) that could not be opened or has ended. `what()` says in Chinese why; of
// the URL it quotes the host alone.
class WebSocketError : public Error {
 public:
  enum class Kind {
    badURL,      // no URL
    refused,     // neither wss nor, to loopback alone, ws
    connection,  // no connection, a failed TLS handshake, one that broke off
    handshake,   // the server does not speak this protocol there
    timeout,     // no answer while it was being opened
    protocol,    // what came is against the protocol, or a message is too large
    closed,      // the server ended it
  };
  WebSocketError(Kind kind, const std::string& text);
  [[nodiscard]] Kind kind() const noexcept { return kind_; }

 private:
  Kind kind_;
};

// An open WebSocket. Pings of the server are answered by itself. Destroying it breaks off the
// connection without a word.
class WebSocket {
 public:
  struct Message {
    enum class Kind { text, binary };
    Kind kind = Kind::binary;
    std::string bytes;
  };

  virtual ~WebSocket() = default;
  // Blocks until a message has come whole; on one thread, which also does the sending. Throws
  // WebSocketError when the connection has ended, and CancellationError at once when asked to stop.
  [[nodiscard]] virtual Message receive(const std::stop_token& stop) = 0;
  // Hands over a binary message; returns at once. It is sent while a thread is in `receive`, and
  // dropped when the connection has ended. Any thread.
  virtual void send(std::string bytes) = 0;
  // Sends what was handed over, and a close frame with this status code, for as long as the network
  // takes it without waiting; then the connection has ended. Any thread.
  virtual void close(std::uint16_t code) noexcept = 0;
};

// Certificates are verified and the environment's proxies used, as by HttpClient. Safe on any
// thread.
class WebSocketClient {
 public:
  static constexpr std::uint64_t mostBytes = std::uint64_t{4} << 20;  // of a message

  virtual ~WebSocketClient() = default;
  // Blocks until the server has agreed, for a minute at most. Throws WebSocketError, and
  // CancellationError at once when asked to stop.
  [[nodiscard]] virtual std::shared_ptr<WebSocket> connect(const std::string& url,
                                                           const std::stop_token& stop) = 0;
};

// libcurl's connection with wslay's frames, both loaded with the first one. Data that the other
// side does not acknowledge for 30 seconds (TCP_USER_TIMEOUT) ends it.
[[nodiscard]] std::unique_ptr<WebSocketClient> makeWebSocketClient(
    const NetworkOptions& options = {});

}  // namespace nomely
