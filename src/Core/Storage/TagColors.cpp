#include "Core/Storage/TagColors.h"

#include <algorithm>

#include <fmt/format.h>

#include "Core/Storage/ConfigValue.h"
#include "Platform/Text/Ascii.h"
#include "Platform/Text/Unicode.h"

namespace nomely {

std::optional<std::string> TagColors::valueOf(const std::string& text) {
  for (const NamedColor& color : named)
    if (text == color.chinese || text == fmt::format("{}色", color.chinese) ||
        loweredAscii(text) == color.english)
      return color.value;
  std::string digits = text.starts_with('#') ? text.substr(1) : text;
  if (digits.size() == 3)
    digits = {digits[0], digits[0], digits[1], digits[1], digits[2], digits[2]};
  if (digits.size() != 6 || digits.find_first_not_of("0123456789ABCDEFabcdef") != std::string::npos)
    return std::nullopt;
  std::ranges::transform(digits, digits.begin(), [](char c) {
    return c >= 'a' && c <= 'f' ? static_cast<char>(c - 'a' + 'A') : c;
  });
  return "#" + digits;
}

bool TagColors::isEmoji(std::string_view text) {
  return isOneLine(text) && graphemeCountUpTo(text, 2) == 1 && !trimSpaceAndBreaks(text).empty();
}

}  // namespace nomely
