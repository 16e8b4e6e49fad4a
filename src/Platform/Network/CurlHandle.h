#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <stop_token>
#include <string>

#include "Platform/Network/Curl.h"
#include "Platform/Network/HttpClient.h"
#include "Platform/Network/NetworkOptions.h"

namespace nomely {

// A transfer of libcurl's with what holds for each of ours: it can be stopped at once, verifies
// certificates, and connects to no address out of its reach. On one thread at a time.
class CurlHandle {
 public:
  // Where it may connect, judged by the address that is connected. But for `everywhere` no proxy is
  // used: it would look the name up itself, and nobody could tell where plain text goes.
  enum class Reach { everywhere, privateNetwork, thisMachine };

  // `host` is what error texts quote.
  CurlHandle(Reach reach, std::string host, const NetworkOptions& options);
  ~CurlHandle();
  CurlHandle(const CurlHandle&) = delete;
  CurlHandle& operator=(const CurlHandle&) = delete;

  [[nodiscard]] CURL* get() const { return easy_.get(); }
  [[nodiscard]] const std::string& host() const { return host_; }

  // Throws HttpError.
  template <typename Value>
  void set(CURLoption option, Value value) const {
    if (curl_.curl_easy_setopt(easy_.get(), option, value) != CURLE_OK) failAsTooOld();
  }
  template <typename Value>
  [[nodiscard]] Value info(CURLINFO which) const {
    Value value{};
    curl_.curl_easy_getinfo(easy_.get(), which, &value);
    return value;
  }

  // Once, until libcurl is done with it. `mayWait` is asked before each wait how long that may
  // last, and throws when a limit has passed. Throws CancellationError at once when asked to stop.
  using MayWait = std::function<std::chrono::milliseconds()>;
  [[nodiscard]] CURLcode perform(const std::stop_token& stop, const MayWait& mayWait) const;
  // What a user is told of a transfer that ended so.
  [[nodiscard]] HttpError failure(CURLcode code) const;

 private:
  static curl_socket_t openSocket(void* self, curlsocktype purpose, curl_sockaddr* address);
  [[nodiscard]] bool mayReach(const sockaddr& address) const;
  [[nodiscard]] CURLcode outcome() const;
  [[noreturn]] static void failAsTooOld();

  const Curl& curl_ = Curl::loaded();
  const Reach reach_;
  const std::string host_;
  std::unique_ptr<CURLM, decltype(&::curl_multi_cleanup)> multi_;
  std::unique_ptr<CURL, decltype(&::curl_easy_cleanup)> easy_;
  bool wasOutOfReach_ = false;
};

}  // namespace nomely
