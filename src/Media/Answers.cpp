#include "Media/Answers.h"

#include <cerrno>
#include <string_view>

#include <unistd.h>

namespace nomely::media {

void Answers::line(std::string text) const {
  for (char& character : text)
    if (character == '\n') character = ' ';
  text += '\n';
  for (std::string_view left = text; !left.empty();) {
    const ssize_t count = ::write(descriptor_, left.data(), left.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return;
    left.remove_prefix(static_cast<std::size_t>(count));
  }
}

}  // namespace nomely::media
