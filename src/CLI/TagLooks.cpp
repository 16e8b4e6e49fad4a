#include "CLI/TagLooks.h"

#include <charconv>

#include <fmt/format.h>

#include "CLI/UsageError.h"
#include "Core/Storage/TagColors.h"

namespace nomely {
namespace {

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
  if (auto color = TagColors::valueOf(text)) return *std::move(color);
  throw UsageError(fmt::format("“{}”不是颜色，例如 '#FF8800'、橙 或 orange", text));
}

std::string TagLooks::checkedEmoji(const std::string& text) {
  if (!TagColors::isEmoji(text)) throw UsageError(TagColors::notAnEmoji);
  return text;
}

}  // namespace nomely
