#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Error.h"
#include "Platform/Network/NetworkOptions.h"

namespace nomely {

// A request that got no reply. `what()` says in Chinese what failed; it never quotes headers or
// bodies, and of the URL the host alone.
class HttpError : public Error {
 public:
  enum class Kind {
    badURL,      // no URL
    refused,     // a URL without a scheme or one that may not be asked; a header that is no line
    connection,  // no connection, a failed TLS handshake, a reply that breaks off
    notHttp,     // what came is no reply of this protocol
    timeout,
    tooLarge,  // the reply exceeds what the request allows
  };
  HttpError(Kind kind, const std::string& text);
  [[nodiscard]] Kind kind() const noexcept { return kind_; }

 private:
  Kind kind_;
};

struct HttpRequest {
  enum class Method { get, post, patch, remove };

  // A part of a multipart/form-data body (RFC 7578): `value`, or what `file` holds, streamed.
  struct Part {
    std::string name;
    std::string value = {};
    std::optional<std::filesystem::path> file = {};
    std::string fileName = {};     // told to the server
    std::string contentType = {};  // empty: none is told
  };

  Method method = Method::post;
  // https, or http to what resolves to a loopback or private address; for http no proxy is used.
  std::string url;
  std::vector<std::pair<std::string, std::string>> headers = {};
  std::string body = {};
  std::vector<Part> parts = {};  // when there are any, the body is made of them
  std::chrono::milliseconds idleTimeout = std::chrono::seconds(60);  // without a byte either way
  std::chrono::milliseconds wholeTimeout = std::chrono::seconds(180);
  std::uint64_t maxReply = std::uint64_t{16} << 20;  // bytes of the body
  // Where the reply's body goes, whatever its status, in place of `HttpResponse::body`: a file that
  // is made anew, readable by the user alone. When the request fails there is none.
  std::optional<std::filesystem::path> into = {};
};

struct HttpResponse {
  int status = 0;
  std::string body;
};

// Certificates are verified, the environment's proxies used; a redirect is a reply like any other.
// Safe on any thread.
class HttpClient {
 public:
  virtual ~HttpClient() = default;
  // Blocks until the reply is there. Throws HttpError, FileError when a part's file can't be read
  // or the one for the body not written, and CancellationError at once when asked to stop.
  [[nodiscard]] virtual HttpResponse send(const HttpRequest& request,
                                          const std::stop_token& stop) = 0;
};

// libcurl's, loaded with the first request.
[[nodiscard]] std::unique_ptr<HttpClient> makeHttpClient(const NetworkOptions& options = {});

}  // namespace nomely
