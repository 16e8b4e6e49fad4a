#include "Platform/Network/VendorRoot.h"

#include <arpa/inet.h>
#include <fmt/format.h>

#include "Platform/Network/HttpClient.h"
#include "Platform/Network/HttpTarget.h"

namespace nomely {
namespace {

// `host` as HttpTarget has it: "localhost:80", "127.0.0.1", "[::1]:80".
bool isThisMachine(std::string host) {
  const std::size_t portColon = host.rfind(':');
  if (portColon != std::string::npos && host.find(']', portColon) == std::string::npos)
    host.resize(portColon);
  if (host == "localhost" || host == "[::1]") return true;
  in_addr address{};
  constexpr std::uint32_t loopbackNet = 127;
  return ::inet_pton(AF_INET, host.c_str(), &address) == 1 &&
         ntohl(address.s_addr) >> 24U == loopbackNet;
}

}  // namespace

std::string vendorRoot(const Environment& environment, std::string_view variable,
                       std::string_view usual) {
  std::string root = environment.get(variable).value_or("");
  if (root.empty()) return std::string(usual);
  const HttpTarget target = HttpTarget::of(root);
  if (target.scheme == HttpTarget::Scheme::http && !isThisMachine(target.host))
    throw HttpError(HttpError::Kind::refused,
                    fmt::format("{} 只能是 https:// 的地址，或本机的地址", variable));
  return root;
}

}  // namespace nomely
