#include "Platform/Network/CurlHandle.h"

#include <new>

#include <fmt/format.h>

#include "Platform/Cancellation.h"
#include "Platform/Network/HttpFailure.h"
#include "Platform/Network/PrivateAddress.h"
#include "Platform/Network/WithoutPipeSignal.h"

namespace nomely {

CurlHandle::CurlHandle(Reach reach, std::string host, const NetworkOptions& options)
    : reach_(reach),
      host_(std::move(host)),
      multi_(curl_.curl_multi_init(), curl_.curl_multi_cleanup),
      easy_(curl_.curl_easy_init(), curl_.curl_easy_cleanup) {
  if (!multi_ || !easy_) throw std::bad_alloc();
  set(CURLOPT_PROTOCOLS_STR, "http,https");
  set(CURLOPT_NOSIGNAL, 1L);
  // Or the end of a request would wait for a look-up of a name that hangs.
  set(CURLOPT_QUICK_EXIT, 1L);
  set(CURLOPT_OPENSOCKETFUNCTION, &CurlHandle::openSocket);
  set(CURLOPT_OPENSOCKETDATA, static_cast<void*>(this));
  if (reach_ != Reach::everywhere) set(CURLOPT_PROXY, "");
  if (!options.certificates.empty()) set(CURLOPT_CAINFO, options.certificates.c_str());
}

CurlHandle::~CurlHandle() {
  const WithoutPipeSignal quiet;
  curl_.curl_multi_remove_handle(multi_.get(), easy_.get());
  easy_.reset();
  multi_.reset();
}

CURLcode CurlHandle::perform(const std::stop_token& stop, const MayWait& mayWait) const {
  const WithoutPipeSignal quiet;
  curl_.curl_multi_add_handle(multi_.get(), easy_.get());
  const std::stop_callback wake(stop, [this] { curl_.curl_multi_wakeup(multi_.get()); });
  for (;;) {
    throwIfStopped(stop);
    int running = 0;
    curl_.curl_multi_perform(multi_.get(), &running);
    if (running == 0) return outcome();
    const auto wait = std::min<std::chrono::milliseconds>(mayWait(), std::chrono::hours(1));
    curl_.curl_multi_poll(multi_.get(), nullptr, 0, static_cast<int>(wait.count()), nullptr);
  }
}

CURLcode CurlHandle::outcome() const {
  int left = 0;
  while (const CURLMsg* const message = curl_.curl_multi_info_read(multi_.get(), &left))
    if (message->msg == CURLMSG_DONE) return message->data.result;
  return CURLE_OUT_OF_MEMORY;
}

HttpError CurlHandle::failure(CURLcode code) const {
  if (code != CURLE_COULDNT_CONNECT || !wasOutOfReach_)
    return httpFailure(code, static_cast<int>(info<long>(CURLINFO_OS_ERRNO)), host_);
  const std::string text =
      reach_ == Reach::thisMachine
          ? fmt::format("{} 不是这台电脑，不加密的 ws:// 不能用于它，请改用 wss://", host_)
          : fmt::format("{} 不在本机或局域网里，不加密的 http:// 不能用于它，请改用 https://",
                        host_);
  return {HttpError::Kind::refused, text};
}

curl_socket_t CurlHandle::openSocket(void* self, curlsocktype /*purpose*/, curl_sockaddr* address) {
  auto& handle = *static_cast<CurlHandle*>(self);
  if (!handle.mayReach(address->addr)) {
    handle.wasOutOfReach_ = true;
    return CURL_SOCKET_BAD;
  }
  return ::socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
}

bool CurlHandle::mayReach(const sockaddr& address) const {
  switch (reach_) {
    case Reach::privateNetwork:
      return isPrivateAddress(address);
    case Reach::thisMachine:
      return isLoopbackAddress(address);
    default:
      return true;
  }
}

void CurlHandle::failAsTooOld() {
  throw HttpError(HttpError::Kind::connection, "系统里的网络组件 libcurl 过旧，请升级系统后重试");
}

}  // namespace nomely
