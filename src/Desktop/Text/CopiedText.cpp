#include "Desktop/Text/CopiedText.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

#include "Core/Markdown/Blocks/BlockSpacing.h"
#include "Core/Markdown/MarkdownTextView.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"
#include "Desktop/Base/Qt.h"

namespace nomely {
namespace {

std::string row(const std::vector<std::string>& cells) {
  std::string line;
  for (const std::string& cell : cells) {
    if (&cell != &cells.front()) line += '\t';
    line += MarkdownTextView::inlineAttributed(MarkdownTextView::prepared(cell)).text;
  }
  return line;
}

struct Plain {
  template <typename Block>
  std::string operator()(const Block& block) const {
    return text(block.text);
  }
  std::string operator()(const markdown::BulletItem& block) const {
    return "• " + text(block.text);
  }
  std::string operator()(const markdown::NumberedItem& block) const {
    return block.number + ". " + text(block.text);
  }
  std::string operator()(const markdown::CheckItem& block) const {
    return (block.checked ? "☑ " : "☐ ") + text(block.text);
  }
  std::string operator()(const MarkdownCallout& block) const {
    return block.body.empty() ? block.title : block.title + "\n" + text(block.body);
  }
  std::string operator()(const markdown::CodeBlock& block) const { return block.code; }
  std::string operator()(const markdown::Mermaid& block) const { return block.code; }
  std::string operator()(const MarkdownTable& block) const {
    std::string lines = row(block.headers);
    for (const auto& cells : block.rows) lines += "\n" + row(cells);
    return lines;
  }
  std::string operator()(const markdown::HorizontalRule&) const { return "———"; }

  [[nodiscard]] static std::string text(const std::string& inlineText) {
    return MarkdownTextView::inlineAttributed(MarkdownTextView::prepared(inlineText)).text;
  }
};

}  // namespace

QString CopiedText::markdown(const MemoHandle& memo) {
  return memo.body();
}

QString CopiedText::plain(const MemoHandle& memo) {
  if (!memo.isValid()) return {};
  const std::string body = MemoTextUtilities::stripOriginalComment(memo.entry.memo->body);
  const auto blocks = MarkdownTextView::blocks(body);
  std::string text;
  const MarkdownBlock* above = nullptr;
  for (const MarkdownBlock& block : *blocks) {
    if (above != nullptr) text += standClose(*above, block) ? "\n" : "\n\n";
    text += std::visit(Plain(), block);
    above = &block;
  }
  return qt(text);
}

void CopiedText::toClipboard(const QString& text, const QString& html) {
  auto data = std::make_unique<QMimeData>();
  data->setText(text);
  if (!html.isEmpty()) data->setHtml(html);
  QGuiApplication::clipboard()->setMimeData(data.release());
}

}  // namespace nomely
