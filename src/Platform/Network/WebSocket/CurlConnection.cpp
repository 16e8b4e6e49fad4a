#include "Platform/Network/WebSocket/CurlConnection.h"

#include <netinet/in.h>
#include <netinet/tcp.h>

namespace nomely {
namespace {

using Reach = CurlHandle::Reach;

// A machine that slept finds its connections dead, and the other side won't tell: what it sends is
// lost. Both of these end such a connection: unanswered data, and unanswered questions where none
// is sent.
int noticeItsEnd(void* /*self*/, curl_socket_t socket, curlsocktype /*purpose*/) {
  constexpr int patience = 30;  // seconds
  constexpr int interval = 10;
  const auto set = [&](int level, int option, int value) {
    ::setsockopt(socket, level, option, &value, sizeof value);
  };
  set(IPPROTO_TCP, TCP_USER_TIMEOUT, patience * 1000);
  set(SOL_SOCKET, SO_KEEPALIVE, 1);
  set(IPPROTO_TCP, TCP_KEEPIDLE, patience);
  set(IPPROTO_TCP, TCP_KEEPINTVL, interval);
  return CURL_SOCKOPT_OK;
}

}  // namespace

CurlConnection::CurlConnection(const std::string& url, const HttpTarget& target,
                               const NetworkOptions& options, Time limit,
                               const std::stop_token& stop)
    : handle_(target.scheme == HttpTarget::Scheme::http ? Reach::thisMachine : Reach::everywhere,
              target.host, options) {
  handle_.set(CURLOPT_URL, url.c_str());
  handle_.set(CURLOPT_CONNECT_ONLY, 1L);
  // Or TLS would agree on HTTP/2.
  handle_.set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
  handle_.set(CURLOPT_SOCKOPTFUNCTION, &noticeItsEnd);
  const CURLcode code = handle_.perform(stop, [&] {
    const auto left = limit - std::chrono::steady_clock::now();
    if (left <= Time::duration::zero()) throw failure(CURLE_OPERATION_TIMEDOUT);
    return std::chrono::ceil<std::chrono::milliseconds>(left);
  });
  if (code != CURLE_OK) throw failure(code);
  socket_ = static_cast<int>(handle_.info<curl_socket_t>(CURLINFO_ACTIVESOCKET));
  if (socket_ < 0) throw failure(CURLE_RECV_ERROR);
}

CurlConnection::Moved CurlConnection::receive(std::span<char> buffer) const noexcept {
  std::size_t count = 0;
  const CURLcode code = curl_.curl_easy_recv(handle_.get(), buffer.data(), buffer.size(), &count);
  if (code == CURLE_OK && count == 0) return {0, CURLE_RECV_ERROR};
  return {count, code};
}

CurlConnection::Moved CurlConnection::send(std::string_view bytes) const noexcept {
  std::size_t count = 0;
  const CURLcode code = curl_.curl_easy_send(handle_.get(), bytes.data(), bytes.size(), &count);
  return {count, code};
}

}  // namespace nomely
