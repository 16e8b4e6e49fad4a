#pragma once

#include <sys/socket.h>

namespace nomely {

// Whether an address is of this machine, what of IPv6 stands for such a one of IPv4 included.
[[nodiscard]] bool isLoopbackAddress(const sockaddr& address);
// Or of a network that no provider carries: private (RFC 1918, RFC 4193) and link-local ones too.
[[nodiscard]] bool isPrivateAddress(const sockaddr& address);

}  // namespace nomely
