#include "Media/Commands.h"

#include <array>
#include <cerrno>

#include <unistd.h>

namespace nomely::media {

bool Commands::read(const std::function<void(std::string_view)>& obey) {
  std::array<char, 256> bytes{};
  const ssize_t count = ::read(descriptor_, bytes.data(), bytes.size());
  if (count < 0 && errno == EINTR) return true;
  if (count <= 0) return false;
  unread_.append(bytes.data(), static_cast<std::size_t>(count));
  for (std::size_t end = 0; (end = unread_.find('\n')) != std::string::npos;) {
    const std::string line = unread_.substr(0, end);
    unread_.erase(0, end + 1);
    obey(line);
  }
  return true;
}

}  // namespace nomely::media
