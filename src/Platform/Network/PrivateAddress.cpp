#include "Platform/Network/PrivateAddress.h"

#include <cstdint>
#include <cstring>

#include <netinet/in.h>

namespace nomely {
namespace {

bool isPrivate(std::uint32_t ipv4) {
  const std::uint32_t first = ipv4 >> 24;
  return first == 127 || first == 10 || ipv4 >> 20 == (172 << 4 | 1) ||
         ipv4 >> 16 == (192 << 8 | 168) || ipv4 >> 16 == (169 << 8 | 254);
}

bool isPrivate(const in6_addr& ipv6) {
  if (IN6_IS_ADDR_V4MAPPED(&ipv6)) {
    std::uint32_t ipv4 = 0;
    std::memcpy(&ipv4, ipv6.s6_addr + 12, sizeof ipv4);
    return isPrivate(ntohl(ipv4));
  }
  return IN6_IS_ADDR_LOOPBACK(&ipv6) || IN6_IS_ADDR_LINKLOCAL(&ipv6) ||
         (ipv6.s6_addr[0] & 0xFE) == 0xFC;
}

}  // namespace

bool isPrivateAddress(const sockaddr& address) {
  if (address.sa_family == AF_INET) {
    sockaddr_in ipv4{};
    std::memcpy(&ipv4, &address, sizeof ipv4);
    return isPrivate(ntohl(ipv4.sin_addr.s_addr));
  }
  if (address.sa_family == AF_INET6) {
    sockaddr_in6 ipv6{};
    std::memcpy(&ipv6, &address, sizeof ipv6);
    return isPrivate(ipv6.sin6_addr);
  }
  return false;
}

}  // namespace nomely
