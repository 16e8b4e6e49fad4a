#include "CLI/MarkdownDrawing.h"

#include <algorithm>
#include <array>
#include <variant>

#include <fmt/format.h>

#include "CLI/StyledTextDrawing.h"
#include "CLI/TableDrawing.h"
#include "Core/Markdown/Blocks/BlockSpacing.h"
#include "Core/Markdown/MarkdownTextView.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"

namespace nomely {
namespace {

constexpr auto npos = std::string_view::npos;

std::string withPrefix(std::string_view prefix, std::string_view text) {
  std::string drawn;
  for (std::size_t feed = text.find('\n'); feed != npos; feed = text.find('\n')) {
    drawn.append(prefix).append(text.substr(0, feed + 1));
    text.remove_prefix(feed + 1);
  }
  return drawn.append(prefix).append(text).append("\n");
}

std::string drawInline(std::string_view prepared, const Style& style) {
  return drawStyled(MarkdownTextView::inlineAttributed(prepared), style);
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
             drawStyled(heading, style) + "\n";
    heading.restyle([](TextStyle& its) { its.weight = FontWeight::regular; });
    return styledLines(drawStyled(heading, Style(false)),
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

}  // namespace nomely
