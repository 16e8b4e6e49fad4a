#include "Core/Extensions/TextStats.h"

#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

bool isIdeograph(char32_t character) {
  return (character >= 0x4E00 && character <= 0x9FFF) ||
         (character >= 0x3400 && character <= 0x4DBF) ||
         (character >= 0x20000 && character <= 0x2A6DF);
}

bool isLatinAt(std::string_view text, std::size_t at) {
  return at < text.size() &&
         ((text[at] >= 'a' && text[at] <= 'z') || (text[at] >= 'A' && text[at] <= 'Z'));
}

// The end of the word that begins at `at`: letters, then at most one "'" or "-" with letters after
// it.
std::size_t wordEnd(std::string_view text, std::size_t at) {
  while (isLatinAt(text, at)) ++at;
  const bool goesOn = at < text.size() && (text[at] == '\'' || text[at] == '-');
  if (!goesOn || !isLatinAt(text, at + 1)) return at;
  ++at;
  while (isLatinAt(text, at)) ++at;
  return at;
}

}  // namespace

std::size_t TextStats::meaningfulCount(std::string_view text) {
  std::size_t count = 0;
  for (std::size_t at = 0; at < text.size();) {
    if (isLatinAt(text, at)) {
      ++count;
      at = wordEnd(text, at);
    } else {
      const DecodedCharacter character = decodeFirst(text.substr(at));
      if (isIdeograph(character.value)) ++count;
      at += character.length;
    }
  }
  return count;
}

}  // namespace nomely
