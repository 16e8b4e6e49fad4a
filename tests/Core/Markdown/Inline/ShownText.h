#pragma once

#include <string>

#include <fmt/format.h>

#include "Core/Markdown/Inline/InlineText.h"

namespace nomely::test {

inline std::string shownColor(const TextColor& color) {
  return fmt::format("{:02X}{:02X}{:02X}", static_cast<int>(color.red * 255),
                     static_cast<int>(color.green * 255), static_cast<int>(color.blue * 255));
}

// Each run that is not plain in braces, with what makes it different first: "a {b:bold}".
inline std::string shown(const StyledText& styled) {
  std::string all;
  std::size_t begin = 0;
  for (const auto& [length, style] : styled.runs) {
    std::string marks;
    if (style.weight == FontWeight::bold) marks += 'b';
    if (style.slant == FontSlant::italic) marks += 'i';
    if (style.isCode) marks += 'm';
    if (style.isStruck) marks += 's';
    if (style.isHit) marks += '=';
    if (style.pointSize) marks += fmt::format("{}", *style.pointSize);
    if (style.foreground) marks += "#" + shownColor(*style.foreground);
    if (style.link != nullptr) marks += "(" + *style.link + ")";
    const std::string text = styled.text.substr(begin, length);
    all += marks.empty() ? text : "{" + marks + ":" + text + "}";
    begin += length;
  }
  EXPECT_EQ(begin, styled.text.size());
  return all;
}

}  // namespace nomely::test
