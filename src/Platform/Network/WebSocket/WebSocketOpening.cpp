#include "Platform/Network/WebSocket/WebSocketOpening.h"

#include <array>
#include <cstdint>

#include <fmt/format.h>

#include "Platform/System/Digest.h"
#include "Platform/System/RandomBytes.h"
#include "Platform/Text/Ascii.h"
#include "Platform/Text/Base64.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr std::string_view lineEnd = "\r\n";

std::string randomKey() {
  std::array<std::uint8_t, 16> bytes{};
  fillWithRandom(bytes);
  return encodeBase64({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

// Of the first header of that name, absent without one.
std::optional<std::string_view> headerIn(std::string_view head, std::string_view name) {
  for (std::size_t at = head.find(lineEnd); at < head.size(); at = head.find(lineEnd, at)) {
    at += lineEnd.size();
    const std::string_view line = head.substr(at, head.find(lineEnd, at) - at);
    const std::size_t colon = line.find(':');
    if (colon != std::string_view::npos && equalsIgnoringAsciiCase(line.substr(0, colon), name))
      return trimHorizontal(line.substr(colon + 1));
  }
  return std::nullopt;
}

// "keep-alive, Upgrade" lists "upgrade".
bool lists(std::string_view list, std::string_view word) {
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(','), list.size());
    if (equalsIgnoringAsciiCase(trimHorizontal(list.substr(0, end)), word)) return true;
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return false;
}

}  // namespace

WebSocketOpening::WebSocketOpening(const HttpTarget& target)
    : host_(target.host),
      key_(randomKey()),
      request_(fmt::format("GET {} HTTP/1.1\r\nHost: {}\r\nUpgrade: websocket\r\n"
                           "Connection: Upgrade\r\nSec-WebSocket-Key: {}\r\n"
                           "Sec-WebSocket-Version: 13\r\nUser-Agent: nomely\r\n\r\n",
                           target.path, host_, key_)) {}

std::optional<std::size_t> WebSocketOpening::agreement(std::string_view received) const {
  constexpr std::string_view protocol = "HTTP/1.1 ";
  constexpr std::string_view end = "\r\n\r\n";
  constexpr std::size_t longest = 16384;
  if (!received.starts_with(protocol.substr(0, received.size()))) refuse("它的回复不是 HTTP");
  const std::string_view head = received.substr(0, received.find(end));
  if (head.size() > longest) refuse("它的回复过长");
  if (head.size() == received.size()) return std::nullopt;
  check(head.substr(protocol.size()));
  return head.size() + end.size();
}

void WebSocketOpening::check(std::string_view head) const {
  constexpr std::string_view salt = "258EAFA5-E914-47DA-95CA-C5AB0DC85B11";
  const std::string_view status = head.substr(0, head.find_first_of(" \r"));
  if (status != "101")
    refuse(status.find_first_not_of("0123456789") == std::string_view::npos && status.size() == 3
               ? fmt::format("它答以 HTTP {}", status)
               : "它的回复不是 HTTP");
  if (!lists(headerIn(head, "Upgrade").value_or(""), "websocket") ||
      !lists(headerIn(head, "Connection").value_or(""), "upgrade") ||
      headerIn(head, "Sec-WebSocket-Accept") != encodeBase64(sha1(key_ + std::string(salt))))
    refuse("它的应答对不上");
  // Neither was asked for, and frames would mean something else with them.
  if (headerIn(head, "Sec-WebSocket-Extensions") || headerIn(head, "Sec-WebSocket-Protocol"))
    refuse("它要用没有约定的扩展");
}

void WebSocketOpening::refuse(std::string_view why) const {
  throw WebSocketError(WebSocketError::Kind::handshake,
                       fmt::format("{} 没有建立 WebSocket 连接（{}），请稍后重试", host_, why));
}

}  // namespace nomely
