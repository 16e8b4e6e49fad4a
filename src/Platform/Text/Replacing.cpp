#include "Platform/Text/Replacing.h"

namespace nomely {

std::string replacingAll(std::string_view text, std::string_view from, std::string_view to) {
  std::string replaced;
  replaced.reserve(text.size());
  for (std::size_t at = text.find(from); at != std::string_view::npos; at = text.find(from)) {
    replaced.append(text.substr(0, at)).append(to);
    text.remove_prefix(at + from.size());
  }
  return replaced.append(text);
}

}  // namespace nomely
