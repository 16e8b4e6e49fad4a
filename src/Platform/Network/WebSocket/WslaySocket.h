#pragma once

#include <atomic>
#include <deque>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <span>
#include <string>

#include "Platform/Network/WebSocket/CurlConnection.h"
#include "Platform/Network/WebSocket/Wslay.h"
#include "Platform/Network/WebSocketClient.h"
#include "Platform/System/WakeUp.h"

namespace nomely {

// A WebSocket over a connection on which the server has agreed to one. The thread in `receive`
// waits for the network with no lock held and moves bytes with the lock, so that `close` can say
// its word from another thread; `send` only leaves its message for whoever holds that lock next.
class WslaySocket final : public WebSocket {
 public:
  // `early` is what came after the agreement. Throws std::bad_alloc, LazyLibrary::MissingError.
  WslaySocket(std::unique_ptr<CurlConnection> connection, std::string early, std::string host);
  ~WslaySocket() override;

  [[nodiscard]] Message receive(const std::stop_token& stop) override;
  void send(std::string bytes) override;
  void close(std::uint16_t code) noexcept override;

 private:
  using Kind = WebSocketError::Kind;

  // What wslay calls back, with this object as `self`.
  struct Callbacks;

  // All of these under the lock of `network_`.
  void exchange();
  void queueHandedOver();
  void end(Kind kind, const std::string& text);
  [[nodiscard]] short awaited() const;
  [[nodiscard]] bool mayRead() const;
  [[nodiscard]] CurlConnection::Moved read(std::span<char> buffer);
  // In wslay's terms.
  [[nodiscard]] ssize_t told(CurlConnection::Moved moved);
  // No exception may pass through wslay.
  template <typename Body>
  void guarded(Body body) noexcept {
    try {
      body();
    } catch (const std::bad_alloc&) {
      failure_ = CURLE_OUT_OF_MEMORY;
      wslay_.wslay_event_shutdown_read(context_);
    }
  }

  const Wslay& wslay_ = Wslay::loaded();
  const std::string host_;
  const WakeUp wakeUp_;

  std::mutex handing_;
  std::deque<std::string> handedOver_;
  std::atomic<bool> hasEnded_ = false;

  std::mutex network_;
  const std::unique_ptr<CurlConnection> connection_;
  wslay_event_context_ptr context_ = nullptr;
  std::string early_;
  std::size_t budget_ = 0;  // bytes that may yet be read before others get a turn
  Message arriving_;
  bool isArriving_ = false;  // the frame whose bytes come is of a message
  std::deque<Message> arrived_;
  CURLcode failure_ = CURLE_OK;
  std::optional<WebSocketError> ended_;
};

}  // namespace nomely
