#include "Core/Markdown/SpokenText.h"

#include <variant>

#include "Core/Markdown/MarkdownTextView.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"

namespace nomely {
namespace {

std::string plain(std::string_view inlineText) {
  return MarkdownTextView::inlineAttributed(MarkdownTextView::prepared(inlineText)).text;
}

std::string row(const std::vector<std::string>& cells) {
  std::string line;
  for (const std::string& cell : cells) {
    const std::string text = plain(cell);
    if (!line.empty() && !text.empty()) line += "，";
    line += text;
  }
  return line;
}

struct Speak {
  std::string operator()(const markdown::Paragraph& block) const {
    return MarkdownTextView::inlineAttributed(MarkdownTextView::preparedParagraph(block.text)).text;
  }
  std::string operator()(const markdown::NumberedItem& block) const {
    return block.number + ". " + plain(block.text);
  }
  std::string operator()(const MarkdownCallout& block) const {
    return block.body.empty() ? block.title : block.title + "\n" + plain(block.body);
  }
  std::string operator()(const markdown::CodeBlock& block) const { return block.code; }
  std::string operator()(const MarkdownTable& table) const {
    std::string lines = row(table.headers);
    for (const auto& cells : table.rows) lines += "\n" + row(cells);
    return lines;
  }
  std::string operator()(const markdown::Mermaid&) const { return {}; }
  std::string operator()(const markdown::HorizontalRule&) const { return {}; }
  template <typename Block>
  std::string operator()(const Block& block) const {
    return plain(block.text);
  }
};

}  // namespace

std::string spokenText(std::string_view body) {
  const std::string shown = MemoTextUtilities::stripOriginalComment(body);
  std::string text;
  for (const MarkdownBlock& block : *MarkdownTextView::blocks(shown)) {
    const std::string line = std::visit(Speak{}, block);
    if (!text.empty() && !line.empty()) text += '\n';
    text += line;
  }
  return text;
}

}  // namespace nomely
