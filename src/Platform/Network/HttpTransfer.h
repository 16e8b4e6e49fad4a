#pragma once

#include <chrono>
#include <memory>
#include <stop_token>

#include "Platform/Network/CurlHandle.h"
#include "Platform/Network/HttpClient.h"
#include "Platform/Network/HttpTarget.h"
#include "Platform/Network/ReplyBody.h"

namespace nomely {

// One request with a connection of its own, from the first byte to the last. On one thread.
class HttpTransfer {
 public:
  // `request` must outlive it. Throws as HttpClient::send does.
  HttpTransfer(const HttpRequest& request, const HttpTarget& target, const NetworkOptions& options);
  HttpTransfer(const HttpTransfer&) = delete;
  HttpTransfer& operator=(const HttpTransfer&) = delete;

  [[nodiscard]] HttpResponse run(const std::stop_token& stop);

 private:
  using Time = std::chrono::steady_clock::time_point;

  // What libcurl calls back.
  static std::size_t receive(const char* bytes, std::size_t size, std::size_t count, void* self);

  void setConnection();
  void setHeaders();
  void setBody();
  void setParts();

  [[nodiscard]] std::chrono::milliseconds untilLimit(Time begun, Time lastMoved) const;
  // Grows with every byte of the request and the reply.
  [[nodiscard]] curl_off_t bytesMoved() const;

  const Curl& curl_ = Curl::loaded();
  const HttpRequest& request_;
  ReplyBody body_;
  std::unique_ptr<curl_mime, decltype(&::curl_mime_free)> mime_;
  std::unique_ptr<curl_slist, decltype(&::curl_slist_free_all)> headers_;
  const CurlHandle handle_;
};

}  // namespace nomely
