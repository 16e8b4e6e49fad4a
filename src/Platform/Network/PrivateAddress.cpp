#include "Platform/Network/PrivateAddress.h"

#include <cstdint>
#include <cstring>
#include <optional>

#include <netinet/in.h>

namespace nomely {
namespace {

in6_addr ipv6Of(const sockaddr& address) {
  sockaddr_in6 whole{};
  std::memcpy(&whole, &address, sizeof whole);
  return whole.sin6_addr;
}

std::optional<std::uint32_t> ipv4Of(const sockaddr& address) {
  std::uint32_t number = 0;
  if (address.sa_family == AF_INET) {
    sockaddr_in whole{};
    std::memcpy(&whole, &address, sizeof whole);
    number = whole.sin_addr.s_addr;
  } else if (address.sa_family == AF_INET6) {
    const in6_addr ipv6 = ipv6Of(address);
    if (!IN6_IS_ADDR_V4MAPPED(&ipv6)) return std::nullopt;
    std::memcpy(&number, ipv6.s6_addr + 12, sizeof number);
  } else {
    return std::nullopt;
  }
  return ntohl(number);
}

}  // namespace

bool isLoopbackAddress(const sockaddr& address) {
  if (const auto ipv4 = ipv4Of(address)) return *ipv4 >> 24 == 127;
  if (address.sa_family != AF_INET6) return false;
  const in6_addr ipv6 = ipv6Of(address);
  return IN6_IS_ADDR_LOOPBACK(&ipv6);
}

bool isPrivateAddress(const sockaddr& address) {
  if (isLoopbackAddress(address)) return true;
  if (const auto ipv4 = ipv4Of(address))
    return *ipv4 >> 24 == 10 || *ipv4 >> 20 == (172 << 4 | 1) || *ipv4 >> 16 == (192 << 8 | 168) ||
           *ipv4 >> 16 == (169 << 8 | 254);
  if (address.sa_family != AF_INET6) return false;
  const in6_addr ipv6 = ipv6Of(address);
  return IN6_IS_ADDR_LINKLOCAL(&ipv6) || (ipv6.s6_addr[0] & 0xFE) == 0xFC;
}

}  // namespace nomely
