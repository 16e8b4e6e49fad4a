#include "Core/Markdown/Text/TextLines.h"

namespace nomely {

std::vector<std::string_view> linesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  lines.reserve(8 + text.size() / 64);
  for (std::size_t feed = text.find('\n'); feed != std::string_view::npos; feed = text.find('\n')) {
    lines.push_back(text.substr(0, feed));
    text.remove_prefix(feed + 1);
  }
  lines.push_back(text);
  return lines;
}

}  // namespace nomely
