#pragma once

#include <sys/socket.h>

namespace nomely {

// Whether an address is of this machine or of a network that no provider carries: loopback, private
// (RFC 1918, RFC 4193) and link-local ones, and what of IPv6 stands for such a one of IPv4.
[[nodiscard]] bool isPrivateAddress(const sockaddr& address);

}  // namespace nomely
