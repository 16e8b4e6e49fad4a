#include "Core/Markdown/Text/StyledText.h"

#include <charconv>

#include <fmt/format.h>

namespace nomely {

std::optional<TextColor> TextColor::fromHex(std::string_view hex) {
  constexpr std::size_t digits = 6;
  if (hex.size() != digits + 1 || hex.front() != '#') return std::nullopt;
  unsigned value = 0;
  const char* const end = hex.data() + hex.size();
  if (std::from_chars(hex.data() + 1, end, value, 16).ptr != end) return std::nullopt;
  const auto part = [&](unsigned shift) { return ((value >> shift) & 0xFFU) / 255.0; };
  return TextColor{part(16), part(8), part(0), 1};
}

std::string TextColor::description() const {
  return fmt::format("{} {} {} {}", red, green, blue, opacity);
}

bool operator==(const TextStyle& a, const TextStyle& b) {
  const bool sameLink =
      a.link == b.link || (a.link != nullptr && b.link != nullptr && *a.link == *b.link);
  return sameLink && a.weight == b.weight && a.slant == b.slant && a.isStruck == b.isStruck &&
         a.isCode == b.isCode && a.isHit == b.isHit && a.pointSize == b.pointSize &&
         a.foreground == b.foreground;
}

void StyledText::append(std::string_view more, const TextStyle& style) {
  if (more.empty()) return;
  text += more;
  if (!runs.empty() && runs.back().style == style)
    runs.back().length += more.size();
  else
    runs.push_back({more.size(), style});
}

void StyledText::append(const StyledText& more) {
  std::size_t begin = 0;
  for (const Run& run : more.runs) {
    append(std::string_view(more.text).substr(begin, run.length), run.style);
    begin += run.length;
  }
}

}  // namespace nomely
