#include "CLI/StyledTextDrawing.h"

#include <cmath>
#include <vector>

#include <fmt/format.h>

#include "Core/Markdown/MarkdownTextView.h"

namespace nomely {
namespace {

constexpr auto npos = std::string_view::npos;

std::string colorCode(std::string_view ground, const TextColor& color) {
  const auto part = [](double value) { return std::lround(value * 255); };
  return fmt::format("{};2;{};{};{}", ground, part(color.red), part(color.green), part(color.blue));
}

// The terminal's codes for a style, parted by semicolons.
std::string codesOf(const TextStyle& its) {
  std::vector<std::string> codes;
  if (its.weight == FontWeight::bold) codes.emplace_back("1");
  if (its.slant == FontSlant::italic) codes.emplace_back("3");
  if (its.link != nullptr) codes.emplace_back("4");
  if (its.isStruck) codes.emplace_back("9");
  // Links and code have the terminal's own colours, which go with its background.
  if (its.foreground)
    codes.push_back(colorCode("38", *its.foreground));
  else if (its.link != nullptr)
    codes.emplace_back("34");
  else if (its.isCode)
    codes.emplace_back("36");
  if (its.isHit) codes.push_back("30;" + colorCode("48", MarkdownTextView::highlightColor));
  return fmt::format("{}", fmt::join(codes, ";"));
}

}  // namespace

std::string styledLines(std::string_view text, std::string_view codes, const Style& style) {
  if (codes.empty()) return std::string(text);
  std::string drawn;
  for (std::size_t feed = text.find('\n'); feed != npos; feed = text.find('\n')) {
    drawn += style.withCodes(codes, text.substr(0, feed)) + "\n";
    text.remove_prefix(feed + 1);
  }
  return drawn + style.withCodes(codes, text);
}

std::string drawStyled(const StyledText& text, const Style& style) {
  std::string drawn;
  std::size_t begin = 0;
  std::size_t linkBegin = 0;
  for (std::size_t i = 0; i < text.runs.size(); ++i) {
    const auto& [length, its] = text.runs[i];
    const std::string shown =
        Terminal::printable(std::string_view(text.text).substr(begin, length));
    drawn += styledLines(shown, style.isEnabled() ? codesOf(its) : "", style);
    const bool isLinkStart = i == 0 || text.runs[i - 1].style.link != its.link;
    if (isLinkStart) linkBegin = begin;
    begin += length;
    // Where a link leads is said after it, unless its text says so.
    const bool isLinkEnd = i + 1 == text.runs.size() || text.runs[i + 1].style.link != its.link;
    if (its.link != nullptr && isLinkEnd &&
        std::string_view(text.text).substr(linkBegin, begin - linkBegin) != *its.link)
      drawn += style.dim(fmt::format(" ({})", Terminal::printable(*its.link)));
  }
  return drawn;
}

}  // namespace nomely
