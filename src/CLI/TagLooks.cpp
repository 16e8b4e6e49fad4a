#include "CLI/TagLooks.h"

#include <algorithm>
#include <array>
#include <charconv>

#include <fmt/format.h>

#include "CLI/UsageError.h"
#include "Core/Storage/ConfigValue.h"
#include "Platform/Text/Ascii.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

struct NamedColor {
  std::string_view chinese;
  std::string_view english;
  std::string_view value;
};

constexpr std::array<NamedColor, 10> namedColors{{{"红", "red", "#E5484D"},
                                                  {"橙", "orange", "#F76B15"},
                                                  {"黄", "yellow", "#E2A336"},
                                                  {"绿", "green", "#30A46C"},
                                                  {"青", "cyan", "#00A2C7"},
                                                  {"蓝", "blue", "#0090FF"},
                                                  {"紫", "purple", "#8E4EC6"},
                                                  {"粉", "pink", "#D6409F"},
                                                  {"棕", "brown", "#AD7F58"},
                                                  {"灰", "gray", "#8B8D98"}}};

bool isHexadecimal(std::string_view text) {
  return text.find_first_not_of("0123456789ABCDEFabcdef") == std::string_view::npos;
}

// The terminal's code of "#RRGGBB"; empty for what another program wrote.
std::string codesOf(std::string_view color) {
  if (color.size() != 7 || color.front() != '#' || !isHexadecimal(color.substr(1))) return {};
  unsigned value = 0;
  std::from_chars(color.data() + 1, color.data() + color.size(), value, 16);
  return fmt::format("38;2;{};{};{}", value >> 16U, (value >> 8U) & 0xFFU, value & 0xFFU);
}

}  // namespace

std::string TagLooks::text(const std::string& tag, const Style& style) const {
  const auto color = config_.colors.find(tag);
  const auto emoji = config_.emojis.find(tag);
  const std::string name = "#" + Terminal::printable(tag);
  const std::string codes = color == config_.colors.end() ? "" : codesOf(color->second);
  const std::string shown = codes.empty() ? style.tag(name) : style.withCodes(codes, name);
  return emoji == config_.emojis.end() ? shown : Terminal::printable(emoji->second) + " " + shown;
}

void TagLooks::addTo(Json& json, const std::string& tag) const {
  if (const auto color = config_.colors.find(tag); color != config_.colors.end())
    json["color"] = color->second;
  if (const auto emoji = config_.emojis.find(tag); emoji != config_.emojis.end())
    json["emoji"] = emoji->second;
}

std::string TagLooks::colorNamed(const std::string& text) {
  for (const NamedColor& color : namedColors)
    if (text == color.chinese || text == fmt::format("{}色", color.chinese) ||
        loweredAscii(text) == color.english)
      return std::string(color.value);
  std::string digits = text.starts_with('#') ? text.substr(1) : text;
  if (digits.size() == 3)
    digits = {digits[0], digits[0], digits[1], digits[1], digits[2], digits[2]};
  if (digits.size() != 6 || !isHexadecimal(digits))
    throw UsageError(fmt::format("“{}”不是颜色，例如 '#FF8800'、橙 或 orange", text));
  std::ranges::transform(digits, digits.begin(), [](char c) {
    return c >= 'a' && c <= 'f' ? static_cast<char>(c - 'a' + 'A') : c;
  });
  return "#" + digits;
}

std::string TagLooks::checkedEmoji(const std::string& text) {
  if (!isOneLine(text) || graphemeCountUpTo(text, 2) != 1 || trimSpaceAndBreaks(text).empty())
    throw UsageError("请只给一个表情，例如 🏃");
  return text;
}

}  // namespace nomely
