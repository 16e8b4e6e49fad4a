#include "Platform/Network/WebSocketClient.h"

#include <array>

namespace nomely {
namespace {

std::string_view codeOf(WebSocketError::Kind kind) {
  constexpr std::array<std::string_view, 7> codes{
      "webSocket.badURL",  "webSocket.refused",  "webSocket.connection", "webSocket.handshake",
      "webSocket.timeout", "webSocket.protocol", "webSocket.closed"};
  return codes.at(static_cast<std::size_t>(kind));
}

}  // namespace

WebSocketError::WebSocketError(Kind kind, const std::string& text)
    : Error(codeOf(kind), text), kind_(kind) {}

}  // namespace nomely
