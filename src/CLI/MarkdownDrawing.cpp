#include "CLI/MarkdownDrawing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <variant>

#include <fmt/format.h>

#include "CLI/TableDrawing.h"
#include "Core/Markdown/MarkdownTextView.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"
#include "Platform/Text/Unicode.h"

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

// Lines are styled one by one: pagers forget a style at the end of a line.
std::string styledLines(std::string_view text, std::string_view codes, const Style& style) {
  if (codes.empty()) return std::string(text);
  std::string drawn;
  for (std::size_t feed = text.find('\n'); feed != npos; feed = text.find('\n')) {
    drawn += style.withCodes(codes, text.substr(0, feed)) + "\n";
    text.remove_prefix(feed + 1);
  }
  return drawn + style.withCodes(codes, text);
}

std::string withPrefix(std::string_view prefix, std::string_view text) {
  std::string drawn;
  for (std::size_t feed = text.find('\n'); feed != npos; feed = text.find('\n')) {
    drawn.append(prefix).append(text.substr(0, feed + 1));
    text.remove_prefix(feed + 1);
  }
  return drawn.append(prefix).append(text).append("\n");
}

std::string drawInline(std::string_view prepared, const Style& style) {
  return MarkdownDrawing::draw(MarkdownTextView::inlineAttributed(prepared), style);
}

struct Draw {
  const Style& style;
  std::size_t width;

  [[nodiscard]] std::string text(std::string_view inlineText) const {
    return drawInline(MarkdownTextView::prepared(inlineText), style);
  }

  std::string operator()(const markdown::Paragraph& block) const {
    return drawInline(MarkdownTextView::preparedParagraph(block.text), style) + "\n";
  }
  std::string operator()(const markdown::Heading& block) const {
    constexpr std::array<std::string_view, 3> codes{"1;4", "1", "1;2"};
    StyledText heading = MarkdownTextView::inlineAttributed(MarkdownTextView::prepared(block.text));
    if (!style.isEnabled())
      return std::string(static_cast<std::size_t>(block.level), '#') + " " +
             MarkdownDrawing::draw(heading, style) + "\n";
    heading.restyle([](TextStyle& its) { its.weight = FontWeight::regular; });
    return styledLines(MarkdownDrawing::draw(heading, Style(false)),
                       codes.at(static_cast<std::size_t>(block.level) - 1), style) +
           "\n";
  }
  std::string operator()(const markdown::BulletItem& block) const {
    return "• " + text(block.text) + "\n";
  }
  std::string operator()(const markdown::NumberedItem& block) const {
    return block.number + ". " + text(block.text) + "\n";
  }
  std::string operator()(const markdown::CheckItem& block) const {
    return (block.checked ? "☑ " : "☐ ") + text(block.text) + "\n";
  }
  std::string operator()(const markdown::Blockquote& block) const {
    return withPrefix(style.dim("│ "), text(block.text));
  }
  std::string operator()(const MarkdownCallout& block) const {
    using enum MarkdownCallout::Kind;
    constexpr std::array<std::string_view, 5> colors{"34", "32", "35", "33", "31"};
    const std::string_view color = colors.at(static_cast<std::size_t>(block.kind));
    const std::string bar = style.withCodes(color, "┃ ");
    std::string drawn = withPrefix(
        bar, styledLines(Terminal::printable(block.title), std::string("1;").append(color), style));
    if (!block.body.empty()) drawn += withPrefix(bar, text(block.body));
    return drawn;
  }
  std::string operator()(const markdown::CodeBlock& block) const { return code(block.code); }
  std::string operator()(const markdown::Mermaid& block) const { return code(block.code); }
  std::string operator()(const MarkdownTable& block) const {
    return drawTable(block, style, width);
  }
  std::string operator()(const markdown::HorizontalRule&) const {
    constexpr std::size_t mostColumns = 40;
    std::string line;
    for (std::size_t i = std::min(width, mostColumns); i > 0; --i) line += "─";
    return style.dim(line) + "\n";
  }

  [[nodiscard]] std::string code(std::string_view lines) const {
    return withPrefix("    ", styledLines(Terminal::printable(lines), "36", style));
  }
};

bool isItem(const MarkdownBlock& block) {
  return std::holds_alternative<markdown::BulletItem>(block) ||
         std::holds_alternative<markdown::NumberedItem>(block) ||
         std::holds_alternative<markdown::CheckItem>(block);
}

// A paragraph of one short line, as those of a poem are.
bool isShortLine(const MarkdownBlock& block) {
  constexpr std::size_t mostCharacters = 37;
  const auto* const paragraph = std::get_if<markdown::Paragraph>(&block);
  return paragraph != nullptr && paragraph->text.find('\n') == npos &&
         graphemeCountUpTo(paragraph->text, mostCharacters) < mostCharacters;
}

bool standClose(const MarkdownBlock& above, const MarkdownBlock& below) {
  return (isItem(above) && isItem(below)) || (isShortLine(above) && isShortLine(below));
}

}  // namespace

std::string MarkdownDrawing::draw(const MarkdownBlocks& blocks, const Style& style,
                                  std::size_t width) {
  std::string drawn;
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    if (i > 0 && !standClose(blocks[i - 1], blocks[i])) drawn += '\n';
    drawn += std::visit(Draw{style, width}, blocks[i]);
  }
  return drawn;
}

std::string MarkdownDrawing::drawBody(std::string_view body, const Style& style,
                                      std::size_t width) {
  const std::string shown = MemoTextUtilities::hasOriginalComment(body)
                                ? MemoTextUtilities::stripOriginalComment(body)
                                : std::string(body);
  return draw(*MarkdownTextView::blocks(shown), style, width);
}

std::string MarkdownDrawing::draw(const StyledText& text, const Style& style) {
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
