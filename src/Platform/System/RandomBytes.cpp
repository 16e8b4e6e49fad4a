#include "Platform/System/RandomBytes.h"

#include <cerrno>
#include <system_error>

#include <sys/random.h>

namespace nomely {

void fillWithRandom(std::span<std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::getrandom(bytes.data(), bytes.size(), 0);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw std::system_error(errno, std::generic_category(), "getrandom");
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
}

}  // namespace nomely
