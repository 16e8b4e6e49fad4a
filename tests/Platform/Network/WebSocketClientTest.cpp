#include <future>
#include <thread>

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include "Platform/Cancellation.h"
#include "Platform/Network/HttpClient.h"
#include "Platform/Network/WebSocketClient.h"
#include "Support/ErrorKind.h"
#include "Support/LoopbackServer.h"
#include "Support/TlsEntrance.h"
#include "Support/WebSocketServer.h"

namespace nomely::test {
namespace {

using Kind = WebSocketError::Kind;
using Manner = LoopbackServer::Manner;
using Message = WebSocket::Message;
using Opcode = WebSocketFrame::Opcode;
using namespace std::chrono_literals;
using namespace std::string_literals;

class WebSocketClientTest : public testing::Test {
 protected:
  [[nodiscard]] std::shared_ptr<WebSocket> connected() {
    return client->connect(sockets.url(), {});
  }
  // The server's end of what was connected next.
  [[nodiscard]] std::shared_ptr<WebSocketPeer> nextPeer() { return sockets.awaitPeer(++peers); }
  // How the WebSocket ends.
  static std::optional<Kind> endOf(WebSocket& socket) {
    return kindOf<WebSocketError>([&] {
      for (;;) static_cast<void>(socket.receive({}));
    });
  }
  std::optional<Kind> failureOf(const std::string& url) {
    return kindOf<WebSocketError>([&] { static_cast<void>(client->connect(url, {})); });
  }

  LoopbackServer server;
  WebSocketServer sockets{server, "/ws"};
  std::size_t peers = 0;
  std::unique_ptr<WebSocketClient> client = makeWebSocketClient();
};

TEST_F(WebSocketClientTest, MessagesBothWays) {
  const std::string large(WebSocketClient::mostBytes, 'L');
  const TlsEntrance tls(server.port());
  const auto trusting = makeWebSocketClient({.certificates = tls.certificates()});
  for (const std::string& url : {sockets.url(), "wss://" + tls.authority() + "/ws?a=1"}) {
    const auto socket = trusting->connect(url, {});
    const auto peer = nextPeer();
    EXPECT_EQ(peer->request().target, url.substr(url.find("/ws")));
    peer->sendText("文字");
    peer->sendBinary("");
    for (const auto& frame : std::vector<WebSocketFrame>{{Opcode::binary, "a\0"s, false},
                                                         {Opcode::ping, "p"},
                                                         {Opcode::continuation, "", false},
                                                         {Opcode::continuation, "b"}})
      peer->send(frame);
    std::jthread sending([&] { peer->sendBinary(large); });
    for (const auto& [kind, bytes] :
         std::vector<std::pair<Message::Kind, std::string>>{{Message::Kind::text, "文字"},
                                                            {Message::Kind::binary, ""},
                                                            {Message::Kind::binary, "a\0b"s},
                                                            {Message::Kind::binary, large}}) {
      const Message message = socket->receive({});
      EXPECT_EQ(message.kind, kind);
      EXPECT_TRUE(message.bytes == bytes) << message.bytes.size();
    }
    socket->send(large);
    socket->send("");
    socket->send(std::string(300, 's'));
    std::stop_source stop;
    auto receiving = std::async(std::launch::async,
                                [&] { static_cast<void>(socket->receive(stop.get_token())); });
    const std::vector<WebSocketFrame> frames = peer->awaitFrames(4);
    EXPECT_EQ(frames[0], (WebSocketFrame{Opcode::pong, "p"}));
    EXPECT_TRUE(frames[1].payload == large);
    EXPECT_EQ(frames[2].payload, "");
    EXPECT_EQ(frames[3], (WebSocketFrame{Opcode::binary, std::string(300, 's')}));
    stop.request_stop();
    EXPECT_THROW(receiving.get(), CancellationError);
    // What was stopped can go on, and ours is the last word.
    socket->send("last");
    socket->close(1001);
    EXPECT_EQ(peer->awaitCloseCode(), 1001);
    EXPECT_EQ(peer->awaitFrames(5)[4].payload, "last");
    EXPECT_EQ(endOf(*socket), Kind::closed);
    socket->send("dropped");
    EXPECT_EQ(endOf(*socket), Kind::closed);
  }
}

TEST_F(WebSocketClientTest, HowItEnds) {
  const std::string tooLarge(WebSocketClient::mostBytes, 'L');
  for (const auto& [bytes, kind] : std::vector<std::pair<std::string, Kind>>{
           {"\x88\x02\x03\xE8"s, Kind::closed},
           {"\x88\x00"s, Kind::closed},
           {"\x82\x7F\0\0\0\0\0\x40\0\x01x"s, Kind::protocol},  // a byte over 4 MiB
           {"\x02\x7F\0\0\0\0\0\x40\0\0"s + tooLarge + "\x80\x01L", Kind::protocol},
           {"\xC2\x01x"s, Kind::protocol},         // a bit of an extension
           {"\x83\x00"s, Kind::protocol},          // no such kind
           {"\x80\x01x"s, Kind::protocol},         // continues nothing
           {"\x81\x01\xFF"s, Kind::protocol},      // text that is none
           {"\x89\x7E\x00\x7E"s, Kind::protocol},  // a long ping
           {"\x82\x05xy"s, Kind::connection}}) {   // and no more
    SCOPED_TRACE(testing::PrintToString(bytes.substr(0, 10)));
    const auto socket = connected();
    const auto peer = nextPeer();
    std::jthread sending([&] {
      peer->sendRaw(bytes);
      if (kind == Kind::connection) peer->cut();
    });
    EXPECT_EQ(endOf(*socket), kind);
    peer->awaitEnd();
  }
  const auto socket = connected();
  nextPeer()->sendRaw("\x81\x04last\x88\x03\x03\xE8r"s);
  EXPECT_EQ(socket->receive({}).bytes, "last");
  EXPECT_EQ(endOf(*socket), Kind::closed);
}

TEST_F(WebSocketClientTest, WhatIsNotOpened) {
  const std::string upgrade =
      "HTTP/1.1 101 Switching\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n";
  const std::string other = upgrade + "Sec-WebSocket-Accept: s3pPLMBiTxaQ9kYGzzhZRbK+xOo=\r\n\r\n";
  const std::string closedPort = [] { return LoopbackServer().url(); }();
  for (const auto& [body, kind] : std::vector<std::pair<std::string, Kind>>{
           {"HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok", Kind::handshake},
           {"HTTP/1.1 101\r\n\r\n", Kind::handshake},
           {other, Kind::handshake},
           {upgrade + std::string(1 << 20, 'h'), Kind::handshake},
           {"SSH-2.0-x\r\n", Kind::handshake},
           {"HTTP/1.1 ", Kind::connection},
           {"", Kind::connection}}) {
    server.answer("/raw", {.body = body, .manner = Manner::raw});
    EXPECT_EQ(failureOf("ws" + server.url("/raw").substr(4)), kind) << body.substr(0, 99);
  }
  const TlsEntrance tls(server.port());
  client = makeWebSocketClient({.certificates = tls.certificates()});
  for (const auto& [url, kind] : std::vector<std::pair<std::string, Kind>>{
           {fmt::format("wss://127.0.0.1:{}/ws", tls.port()), Kind::connection},  // another's name
           {fmt::format("wss://127.0.0.1:{}/ws", server.port()), Kind::connection},  // no TLS
           {"ws" + closedPort.substr(4), Kind::connection},
           {"wss://no.invalid/secret", Kind::connection},
           {"ws://192.168.1.1/ws", Kind::refused},
           {"ws://8.8.8.8/ws", Kind::refused},
           {server.url("/ws"), Kind::refused},
           {"", Kind::badURL},
           {"/ws", Kind::badURL},
           {"wss://a b/", Kind::badURL}})
    EXPECT_EQ(failureOf(url), kind) << url;
  client = makeWebSocketClient();
  EXPECT_EQ(failureOf("wss://" + tls.authority() + "/ws"), Kind::connection) << "not trusted";
  EXPECT_EQ(sockets.count(), 0U);
}

TEST_F(WebSocketClientTest, StopsAtOnce) {
  server.answer("/silent", {.manner = Manner::hanging});
  std::stop_source stop;
  auto opening = std::async(std::launch::async, [&] {
    return client->connect("ws" + server.url("/silent").substr(4), stop.get_token());
  });
  static_cast<void>(server.awaitRequest());
  const auto asked = std::chrono::steady_clock::now();
  stop.request_stop();
  EXPECT_THROW(opening.get(), CancellationError);
  EXPECT_LT(std::chrono::steady_clock::now() - asked, 5s);
  server.awaitQuiet();
}

TEST(HttpClientOverTls, TrustsWhomItIsTold) {
  LoopbackServer server;
  server.answer("/", {.body = "secret"});
  const TlsEntrance tls(server.port());
  const std::string url = "https://" + tls.authority() + "/";
  EXPECT_EQ(makeHttpClient({.certificates = tls.certificates()})->send({.url = url}, {}).body,
            "secret");
  const auto none = tls.certificates() + ".none";
  for (const auto& [client, asked] :
       {std::pair(NetworkOptions{}, url),
        {NetworkOptions{none}, url},
        {NetworkOptions{tls.certificates()}, fmt::format("https://127.0.0.1:{}/", tls.port())}})
    EXPECT_FAILURE(HttpError, connection, makeHttpClient(client)->send({.url = asked}, {}));
  EXPECT_EQ(server.requests().size(), 1U);
}

}  // namespace
}  // namespace nomely::test
