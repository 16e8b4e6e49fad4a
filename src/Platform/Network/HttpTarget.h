#pragma once

#include <string>

namespace nomely {

// The parts of a URL that decide how it may be asked.
struct HttpTarget {
  enum class Scheme { http, https };
  Scheme scheme = Scheme::https;
  std::string host;  // with the port where the URL names one; what error texts quote
  std::string path;  // with what follows a "?"

  // Throws HttpError: badURL, refused.
  [[nodiscard]] static HttpTarget of(const std::string& url);
};

}  // namespace nomely
