#pragma once

#include <chrono>
#include <cstddef>
#include <span>
#include <stop_token>
#include <string_view>

#include "Platform/Network/CurlHandle.h"
#include "Platform/Network/HttpTarget.h"

namespace nomely {

// A connection to where a URL leads, through TLS and a proxy where they belong, over which bytes
// go as they are. On one thread at a time.
class CurlConnection {
 public:
  using Time = std::chrono::steady_clock::time_point;

  // Blocks until it stands. `url` is the target's, with "http" or "https". Throws HttpError, and
  // CancellationError at once when asked to stop.
  CurlConnection(const std::string& url, const HttpTarget& target, const NetworkOptions& options,
                 Time limit, const std::stop_token& stop);

  // To wait on: for what comes, and for room for what is to go.
  [[nodiscard]] int socket() const noexcept { return socket_; }

  // How many bytes moved, which is none when `code` says so: CURLE_AGAIN when that would have to be
  // waited for, else the failure. The end of the connection is one.
  struct Moved {
    std::size_t count = 0;
    CURLcode code = CURLE_OK;
  };
  [[nodiscard]] Moved receive(std::span<char> buffer) const noexcept;
  [[nodiscard]] Moved send(std::string_view bytes) const noexcept;
  // What a user is told of it.
  [[nodiscard]] HttpError failure(CURLcode code) const { return handle_.failure(code); }

 private:
  const Curl& curl_ = Curl::loaded();
  const CurlHandle handle_;
  int socket_ = -1;
};

}  // namespace nomely
