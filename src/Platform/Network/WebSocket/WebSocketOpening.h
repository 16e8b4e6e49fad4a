#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Network/HttpTarget.h"
#include "Platform/Network/WebSocketClient.h"

namespace nomely {

// The client's part of the handshake that opens a WebSocket (RFC 6455, section 4.1), without the
// network. Pure but for its key, which is random.
class WebSocketOpening {
 public:
  explicit WebSocketOpening(const HttpTarget& target);

  // What is to be sent.
  [[nodiscard]] const std::string& request() const noexcept { return request_; }
  // Takes all that has come so far. Gives how much of it is the server's agreement, after which
  // frames begin; absent while it is not there whole. Throws WebSocketError for anything else.
  [[nodiscard]] std::optional<std::size_t> agreement(std::string_view received) const;

 private:
  void check(std::string_view head) const;
  [[noreturn]] void refuse(std::string_view why) const;

  const std::string host_;
  const std::string key_;
  const std::string request_;
};

}  // namespace nomely
