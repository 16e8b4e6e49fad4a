#include "CLI/TextWrapping.h"

#include <algorithm>

#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

bool isWide(std::string_view character) {
  return displayWidth(character) > 1;
}

bool closes(std::string_view character) {
  constexpr std::string_view marks = "，。、；：？！）”』」…";
  return isWide(character) && marks.find(character) != std::string_view::npos;
}

bool opens(std::string_view character) {
  constexpr std::string_view marks = "（“『「";
  return isWide(character) && marks.find(character) != std::string_view::npos;
}

// What has to stay on one line: a word, a wide character with the closing marks after it.
std::string_view takePiece(std::string_view& rest) {
  std::string_view left = rest;
  bool first = true;
  bool isOpen = false;
  bool wasWide = false;
  while (!left.empty() && left.front() != ' ') {
    const std::string_view character = graphemePrefix(left, 1);
    const bool breaks = (isWide(character) || wasWide) && !closes(character) && !isOpen;
    if (!first && breaks) break;
    isOpen = opens(character);
    wasWide = isWide(character);
    first = false;
    left.remove_prefix(character.size());
  }
  const std::string_view piece = rest.substr(0, rest.size() - left.size());
  rest = left;
  return piece;
}

}  // namespace

std::string wrapText(std::string_view text, std::size_t width, std::size_t indent) {
  constexpr std::size_t narrowest = 10;
  width = std::max(width, narrowest);
  std::string wrapped;
  std::size_t used = 0;
  while (!text.empty()) {
    const std::size_t blanks = std::min(text.find_first_not_of(' '), text.size());
    text.remove_prefix(blanks);
    const std::string_view piece = takePiece(text);
    const std::size_t columns = displayWidth(piece);
    if (used > 0 && used + blanks + columns > width) {
      wrapped.append("\n").append(indent, ' ');
      used = 0;
    } else {
      wrapped.append(blanks, ' ');
      used += blanks;
    }
    wrapped += piece;
    used += columns;
  }
  return wrapped;
}

}  // namespace nomely
