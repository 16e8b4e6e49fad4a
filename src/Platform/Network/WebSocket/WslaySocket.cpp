#include "Platform/Network/WebSocket/WslaySocket.h"

#include <algorithm>
#include <array>
#include <system_error>
#include <utility>

#include <fmt/format.h>
#include <poll.h>
#include <sys/socket.h>

#include "Platform/Cancellation.h"
#include "Platform/Network/WithoutPipeSignal.h"
#include "Platform/System/RandomBytes.h"

namespace nomely {
namespace {

// Bytes that are read before the lock is let go and the stop token looked at.
constexpr std::size_t mostAtOnce = std::size_t{256} << 10;
// Messages that wait to be sent before nothing more is read: who pings without end takes the
// answers.
constexpr std::size_t mostQueued = 256;

}  // namespace

struct WslaySocket::Callbacks {
  static ssize_t receive(wslay_event_context_ptr /*context*/, std::uint8_t* buffer,
                         std::size_t length, int /*flags*/, void* self) {
    auto& socket = *static_cast<WslaySocket*>(self);
    return socket.told(socket.read({reinterpret_cast<char*>(buffer), length}));
  }

  static ssize_t send(wslay_event_context_ptr /*context*/, const std::uint8_t* bytes,
                      std::size_t length, int /*flags*/, void* self) {
    auto& socket = *static_cast<WslaySocket*>(self);
    return socket.told(socket.connection_->send({reinterpret_cast<const char*>(bytes), length}));
  }

  static int mask(wslay_event_context_ptr /*context*/, std::uint8_t* buffer, std::size_t length,
                  void* /*self*/) {
    try {
      fillWithRandom({buffer, length});
      return 0;
    } catch (const std::system_error&) {
      return -1;
    }
  }

  static void frameBegins(wslay_event_context_ptr context,
                          const wslay_event_on_frame_recv_start_arg* frame, void* self) {
    auto& socket = *static_cast<WslaySocket*>(self);
    socket.isArriving_ = !wslay_is_ctrl_frame(frame->opcode);
    if (!socket.isArriving_) return;
    if (frame->opcode != WSLAY_CONTINUATION_FRAME)
      socket.arriving_ = {
          frame->opcode == WSLAY_TEXT_FRAME ? Message::Kind::text : Message::Kind::binary, {}};
    // wslay itself looks at single frames alone.
    if (frame->payload_length <= WebSocketClient::mostBytes - socket.arriving_.bytes.size()) return;
    socket.isArriving_ = false;
    socket.wslay_.wslay_event_queue_close(context, WSLAY_CODE_MESSAGE_TOO_BIG, nullptr, 0);
    socket.wslay_.wslay_event_shutdown_read(context);
  }

  static void bytesCome(wslay_event_context_ptr /*context*/,
                        const wslay_event_on_frame_recv_chunk_arg* chunk, void* self) {
    auto& socket = *static_cast<WslaySocket*>(self);
    if (socket.isArriving_)
      socket.guarded([&] {
        socket.arriving_.bytes.append(reinterpret_cast<const char*>(chunk->data),
                                      chunk->data_length);
      });
  }

  static void messageEnds(wslay_event_context_ptr /*context*/,
                          const wslay_event_on_msg_recv_arg* /*message*/, void* self) {
    auto& socket = *static_cast<WslaySocket*>(self);
    if (socket.isArriving_)
      socket.guarded([&] { socket.arrived_.push_back(std::exchange(socket.arriving_, {})); });
  }
};

WslaySocket::WslaySocket(std::unique_ptr<CurlConnection> connection, std::string early,
                         std::string host)
    : host_(std::move(host)), connection_(std::move(connection)), early_(std::move(early)) {
  constexpr wslay_event_callbacks callbacks{
      Callbacks::receive,   Callbacks::send, Callbacks::mask,       Callbacks::frameBegins,
      Callbacks::bytesCome, nullptr,         Callbacks::messageEnds};
  if (wslay_.wslay_event_context_client_init(&context_, &callbacks, this) != 0)
    throw std::bad_alloc();
  // Its own buffer for a message is a list with an entry a frame, which may hold a byte each.
  wslay_.wslay_event_config_set_no_buffering(context_, 1);
  wslay_.wslay_event_config_set_max_recv_msg_length(context_, WebSocketClient::mostBytes);
}

WslaySocket::~WslaySocket() {
  wslay_.wslay_event_context_free(context_);
}

WebSocket::Message WslaySocket::receive(const std::stop_token& stop) {
  const WithoutPipeSignal quiet;
  const std::stop_callback wake(stop, [this] { wakeUp_.wake(); });
  for (;;) {
    std::array<pollfd, 2> waited{
        {{connection_->socket(), 0, 0}, {wakeUp_.descriptor(), POLLIN, 0}}};
    int patience = -1;
    {
      const std::lock_guard lock(network_);
      throwIfStopped(stop);
      if (arrived_.empty() && !ended_) exchange();
      if (!arrived_.empty()) {
        Message first = std::move(arrived_.front());
        arrived_.pop_front();
        return first;
      }
      if (ended_) throw WebSocketError(*ended_);
      waited[0].events = awaited();
      // What TLS holds decrypted already nobody can wait for.
      if (budget_ == 0) patience = 0;
    }
    ::poll(waited.data(), waited.size(), patience);
    wakeUp_.clear();
  }
}

void WslaySocket::send(std::string bytes) {
  {
    const std::lock_guard lock(handing_);
    if (hasEnded_) return;
    handedOver_.push_back(std::move(bytes));
  }
  wakeUp_.wake();
}

void WslaySocket::close(std::uint16_t code) noexcept {
  const WithoutPipeSignal quiet;
  const std::lock_guard lock(network_);
  if (hasEnded_) return;
  try {
    queueHandedOver();
    wslay_.wslay_event_send(context_);  // or the close frame would overtake what waits
    wslay_.wslay_event_queue_close(context_, code, nullptr, 0);
    wslay_.wslay_event_send(context_);
    arrived_.clear();
    end(Kind::closed, "连接已经关闭");
  } catch (const std::bad_alloc&) {
    ::shutdown(connection_->socket(), SHUT_RDWR);
  }
  wakeUp_.wake();
}

void WslaySocket::exchange() {
  queueHandedOver();
  budget_ = mostAtOnce;
  const bool isReceiving =
      wslay_.wslay_event_recv(context_) == 0 && wslay_.wslay_event_get_read_enabled(context_) != 0;
  const bool isSending = wslay_.wslay_event_send(context_) == 0;
  if (wslay_.wslay_event_get_close_received(context_) != 0)
    end(Kind::closed, fmt::format("{} 结束了连接，请稍后重试", host_));
  else if (failure_ != CURLE_OK)
    end(Kind::connection, connection_->failure(failure_).what());
  else if (!isReceiving || !isSending)
    end(Kind::protocol,
        fmt::format("{} 发来的内容不合 WebSocket 的规则或超过 {} MiB，已断开连接，请稍后重试",
                    host_, WebSocketClient::mostBytes >> 20));
}

void WslaySocket::queueHandedOver() {
  std::deque<std::string> messages;
  {
    const std::lock_guard lock(handing_);
    messages.swap(handedOver_);
  }
  for (const std::string& bytes : messages) {
    const wslay_event_msg message{
        WSLAY_BINARY_FRAME, reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()};
    wslay_.wslay_event_queue_msg(context_, &message);
  }
}

void WslaySocket::end(Kind kind, const std::string& text) {
  {
    const std::lock_guard lock(handing_);
    hasEnded_ = true;
    handedOver_.clear();
  }
  ::shutdown(connection_->socket(), SHUT_RDWR);
  ended_.emplace(kind, text);
}

short WslaySocket::awaited() const {
  short events = 0;
  if (mayRead()) events |= POLLIN;
  if (wslay_.wslay_event_want_write(context_) != 0) events |= POLLOUT;
  return events;
}

bool WslaySocket::mayRead() const {
  return wslay_.wslay_event_get_queued_msg_count(context_) <= mostQueued;
}

CurlConnection::Moved WslaySocket::read(std::span<char> buffer) {
  if (!arrived_.empty() || budget_ == 0 || !mayRead()) return {0, CURLE_AGAIN};
  buffer = buffer.first(std::min(buffer.size(), budget_));
  CurlConnection::Moved moved;
  if (early_.empty()) {
    moved = connection_->receive(buffer);
  } else {
    moved.count = early_.copy(buffer.data(), buffer.size());
    early_.erase(0, moved.count);
  }
  budget_ -= moved.count;
  return moved;
}

ssize_t WslaySocket::told(CurlConnection::Moved moved) {
  if (moved.code == CURLE_OK) return static_cast<ssize_t>(moved.count);
  if (moved.code != CURLE_AGAIN) failure_ = moved.code;
  wslay_.wslay_event_set_error(
      context_, moved.code == CURLE_AGAIN ? WSLAY_ERR_WOULDBLOCK : WSLAY_ERR_CALLBACK_FAILURE);
  return -1;
}

}  // namespace nomely
