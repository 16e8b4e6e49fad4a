#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Support/LoopbackServer.h"

namespace nomely::test {

struct WebSocketFrame {
  enum class Opcode : std::uint8_t { continuation, text, binary, close = 8, ping, pong };
  Opcode opcode = Opcode::binary;
  std::string payload = {};
  bool isLast = true;  // of its message
  friend bool operator==(const WebSocketFrame&, const WebSocketFrame&) = default;
};

// The server's end of an open WebSocket. Records what comes and answers only what it is told to,
// but for the client's pings and close. Safe on any thread; once the connection has ended, calls
// that send do nothing.
class WebSocketPeer {
 public:
  using OnFrame = std::function<void(WebSocketPeer&, const WebSocketFrame&)>;

  WebSocketPeer(int socket, LoopbackServer::Request request)
      : socket_(socket), request_(std::move(request)) {}
  WebSocketPeer(const WebSocketPeer&) = delete;
  WebSocketPeer& operator=(const WebSocketPeer&) = delete;

  // Which opened it.
  [[nodiscard]] const LoopbackServer::Request& request() const { return request_; }

  void send(const WebSocketFrame& frame);
  void sendText(std::string text) { send({WebSocketFrame::Opcode::text, std::move(text)}); }
  void sendBinary(std::string bytes) { send({WebSocketFrame::Opcode::binary, std::move(bytes)}); }
  // As they are: garbage, half a frame.
  void sendRaw(std::string_view bytes);

  // Ends the connection without a word, as a network that goes does.
  void cut();
  // Stops reading, as a machine that went to sleep does, until `thaw` or the connection's end.
  void freeze();
  void thaw();

  [[nodiscard]] bool isOpen() const;
  // Returns when the connection has ended from either side; throws otherwise.
  void awaitEnd() const;
  // What came, control frames too, once there are `count`; throws when they don't come in time.
  [[nodiscard]] std::vector<WebSocketFrame> awaitFrames(std::size_t count) const;
  // What the client's close frame said, once the connection has ended.
  [[nodiscard]] std::optional<std::uint16_t> awaitCloseCode() const;

  // Reads until the end: what the connection's thread does.
  void serve(const OnFrame& onFrame);

 private:
  [[nodiscard]] std::optional<WebSocketFrame> receiveFrame();
  // The next `length` bytes; false at the end.
  [[nodiscard]] bool read(std::string& bytes, std::size_t length);
  template <typename Condition>
  void await(const char* what, Condition condition) const;

  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::mutex sending_;
  int socket_;  // -1 when the connection has ended, since its number may be another one's by then
  const LoopbackServer::Request request_;
  bool isFrozen_ = false;
  std::vector<WebSocketFrame> frames_;
};

// WebSockets on a path of a loopback server, which must not go before it is asked for the last
// time.
//
//   LoopbackServer server;
//   WebSocketServer sockets(server, "/ws");
//   client.connect(sockets.url());
//   sockets.awaitPeer()->sendText("hello");
class WebSocketServer {
 public:
  // Called on the connection's thread with no lock held, before anything is read and for each
  // frame.
  struct Handlers {
    std::function<void(const std::shared_ptr<WebSocketPeer>&)> onOpen = {};
    WebSocketPeer::OnFrame onFrame = {};
  };

  WebSocketServer(LoopbackServer& server, std::string path, Handlers handlers);
  WebSocketServer(LoopbackServer& server, std::string path)
      : WebSocketServer(server, std::move(path), Handlers()) {}
  // Thaws what is frozen, for the loopback server to end.
  ~WebSocketServer();
  WebSocketServer(const WebSocketServer&) = delete;
  WebSocketServer& operator=(const WebSocketServer&) = delete;

  // "ws://127.0.0.1:40123/ws"
  [[nodiscard]] std::string url() const;
  // The `count`-th to have connected; throws when that does not happen in time.
  [[nodiscard]] std::shared_ptr<WebSocketPeer> awaitPeer(std::size_t count = 1) const;
  // How many have connected so far.
  [[nodiscard]] std::size_t count() const;

 private:
  struct State {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<std::shared_ptr<WebSocketPeer>> peers;
  };

  const LoopbackServer& server_;
  const std::string path_;
  std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace nomely::test
