#include "Support/WebSocketServer.h"

#include <array>
#include <stdexcept>

#include <fmt/format.h>
#include <openssl/evp.h>
#include <sys/socket.h>

#include "Platform/Text/Base64.h"
#include "Support/Deadline.h"

namespace nomely::test {
namespace {

using Opcode = WebSocketFrame::Opcode;

// RFC 6455, 4.2.2.
std::string acceptKey(const std::string& key) {
  const std::string salted = key + "258EAFA5-E914-47DA-95CA-C5AB0DC85B11";
  std::string digest(EVP_MAX_MD_SIZE, '\0');
  unsigned length = 0;
  EVP_Digest(salted.data(), salted.size(), reinterpret_cast<unsigned char*>(digest.data()), &length,
             EVP_sha1(), nullptr);
  digest.resize(length);
  return encodeBase64(digest);
}

std::string bigEndian(std::uint64_t number, int bytes) {
  std::string text;
  for (int i = bytes - 1; i >= 0; --i) text += static_cast<char>(number >> (8 * i));
  return text;
}

std::uint64_t numberOf(std::string_view bytes) {
  std::uint64_t number = 0;
  for (const char byte : bytes) number = number << 8 | static_cast<unsigned char>(byte);
  return number;
}

std::string encoded(const WebSocketFrame& frame) {
  const std::size_t size = frame.payload.size();
  std::string head(1,
                   static_cast<char>((frame.isLast ? 0x80 : 0) | static_cast<int>(frame.opcode)));
  if (size < 126)
    head += static_cast<char>(size);
  else if (size < 65536)
    head += '\x7E' + bigEndian(size, 2);
  else
    head += '\x7F' + bigEndian(size, 8);
  return head + frame.payload;
}

}  // namespace

void WebSocketPeer::send(const WebSocketFrame& frame) {
  sendRaw(encoded(frame));
}

void WebSocketPeer::sendRaw(std::string_view bytes) {
  const std::lock_guard lock(sending_);
  if (isOpen()) static_cast<void>(sendAll(socket_, bytes));
}

void WebSocketPeer::cut() {
  const std::lock_guard lock(mutex_);
  if (socket_ >= 0) ::shutdown(socket_, SHUT_RDWR);
  isFrozen_ = false;
  changed_.notify_all();
}

void WebSocketPeer::freeze() {
  const std::lock_guard lock(mutex_);
  isFrozen_ = true;
}

void WebSocketPeer::thaw() {
  const std::lock_guard lock(mutex_);
  isFrozen_ = false;
  changed_.notify_all();
}

bool WebSocketPeer::isOpen() const {
  const std::lock_guard lock(mutex_);
  return socket_ >= 0;
}

template <typename Condition>
void WebSocketPeer::await(const char* what, Condition condition) const {
  std::unique_lock lock(mutex_);
  if (!changed_.wait_for(lock, longestWait, condition))
    throw std::runtime_error(fmt::format("WebSocket: no {} in time", what));
}

void WebSocketPeer::awaitEnd() const {
  await("end", [this] { return socket_ < 0; });
}

std::vector<WebSocketFrame> WebSocketPeer::awaitFrames(std::size_t count) const {
  await("frames", [&] { return frames_.size() >= count; });
  const std::lock_guard lock(mutex_);
  return frames_;
}

std::optional<std::uint16_t> WebSocketPeer::awaitCloseCode() const {
  awaitEnd();
  const std::lock_guard lock(mutex_);
  for (const WebSocketFrame& frame : frames_)
    if (frame.opcode == Opcode::close && frame.payload.size() >= 2)
      return static_cast<std::uint16_t>(numberOf(std::string_view(frame.payload).substr(0, 2)));
  return std::nullopt;
}

void WebSocketPeer::serve(const OnFrame& onFrame) {
  while (const auto frame = receiveFrame()) {
    {
      const std::lock_guard lock(mutex_);
      frames_.push_back(*frame);
      changed_.notify_all();
    }
    if (onFrame) onFrame(*this, *frame);
    if (frame->opcode == Opcode::ping) send({Opcode::pong, frame->payload});
    if (frame->opcode != Opcode::close) continue;
    send(*frame);
    break;
  }
  ::shutdown(socket_, SHUT_RDWR);  // or a thread that sends would keep the lock
  const std::scoped_lock lock(sending_, mutex_);
  socket_ = -1;
  changed_.notify_all();
}

std::optional<WebSocketFrame> WebSocketPeer::receiveFrame() {
  std::string head;
  if (!read(head, 2)) return std::nullopt;
  const auto first = static_cast<unsigned char>(head[0]);
  const auto second = static_cast<unsigned char>(head[1]);
  if ((second & 0x80) == 0) return std::nullopt;  // a client has to mask
  std::uint64_t size = second & 0x7F;
  if (size >= 126) {
    std::string longer;
    if (!read(longer, size == 126 ? 2 : 8)) return std::nullopt;
    size = numberOf(longer);
  }
  std::string mask;
  WebSocketFrame frame{static_cast<Opcode>(first & 0x0F), {}, (first & 0x80) != 0};
  if (!read(mask, 4) || !read(frame.payload, size)) return std::nullopt;
  for (std::size_t i = 0; i < size; ++i)
    frame.payload[i] = static_cast<char>(frame.payload[i] ^ mask[i % mask.size()]);
  return frame;
}

bool WebSocketPeer::read(std::string& bytes, std::size_t length) {
  std::array<char, 1 << 16> buffer{};
  while (bytes.size() < length) {
    // Nothing leaves the socket while it is frozen, also when this thread was waiting before.
    if (::recv(socket_, buffer.data(), 1, MSG_PEEK) <= 0) return false;
    {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [this] { return !isFrozen_; });
    }
    const ssize_t count =
        ::recv(socket_, buffer.data(), std::min(buffer.size(), length - bytes.size()), 0);
    if (count <= 0) return false;
    bytes.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return true;
}

WebSocketServer::WebSocketServer(LoopbackServer& server, std::string path, Handlers handlers)
    : server_(server), path_(std::move(path)) {
  server.answer(path_, [state = state_,
                        handlers = std::move(handlers)](const LoopbackServer::Request& request) {
    return LoopbackServer::Answer{.takeOver = [state, handlers, request](int socket) {
      const auto key = request.headers.find("sec-websocket-key");
      if (key == request.headers.end()) return;
      const std::string head = fmt::format(
          "HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
          "Sec-WebSocket-Accept: {}\r\n\r\n",
          acceptKey(key->second));
      if (!sendAll(socket, head)) return;
      const auto peer = std::make_shared<WebSocketPeer>(socket, request);
      {
        const std::lock_guard lock(state->mutex);
        state->peers.push_back(peer);
        state->changed.notify_all();
      }
      if (handlers.onOpen) handlers.onOpen(peer);
      peer->serve(handlers.onFrame);
    }};
  });
}

WebSocketServer::~WebSocketServer() {
  const std::lock_guard lock(state_->mutex);
  for (const auto& peer : state_->peers) peer->thaw();
}

std::string WebSocketServer::url() const {
  return fmt::format("ws://127.0.0.1:{}{}", server_.port(), path_);
}

std::shared_ptr<WebSocketPeer> WebSocketServer::awaitPeer(std::size_t count) const {
  std::unique_lock lock(state_->mutex);
  if (!state_->changed.wait_for(lock, longestWait, [&] { return state_->peers.size() >= count; }))
    throw std::runtime_error("no WebSocket was opened in time");
  return state_->peers[count - 1];
}

std::size_t WebSocketServer::count() const {
  const std::lock_guard lock(state_->mutex);
  return state_->peers.size();
}

}  // namespace nomely::test
