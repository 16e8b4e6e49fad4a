#include "Platform/Network/HttpClient.h"

#include <array>

namespace nomely {
namespace {

std::string_view codeOf(HttpError::Kind kind) {
  constexpr std::array<std::string_view, 6> codes{"http.badURL",  "http.refused", "http.connection",
                                                  "http.notHttp", "http.timeout", "http.tooLarge"};
  return codes.at(static_cast<std::size_t>(kind));
}

}  // namespace

HttpError::HttpError(Kind kind, const std::string& text) : Error(codeOf(kind), text), kind_(kind) {}

}  // namespace nomely
