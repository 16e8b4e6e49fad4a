#include "Platform/Text/Printable.h"

#include "Platform/Text/Unicode.h"

namespace nomely {

std::string printable(std::string_view text) {
  std::string shown;
  shown.reserve(text.size());
  while (!text.empty()) {
    const DecodedCharacter character = decodeFirst(text);
    const char32_t value = character.value;
    const bool isControl =
        (value < 0x20 && value != '\n' && value != '\t') || (value >= 0x7F && value < 0xA0);
    if (isControl)
      appendUtf8(shown, 0xFFFD);
    else
      shown.append(text.substr(0, character.length));
    text.remove_prefix(character.length);
  }
  return shown;
}

}  // namespace nomely
