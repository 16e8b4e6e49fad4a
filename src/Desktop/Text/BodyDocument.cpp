#include "Desktop/Text/BodyDocument.h"

#include <QAbstractTextDocumentLayout>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextLayout>
#include <algorithm>
#include <cmath>

#include "Desktop/Base/Qt.h"
#include "Desktop/Text/BlockDrawing.h"
#include "Desktop/Text/CopiedText.h"

namespace nomely {
namespace {

constexpr qsizetype longestLine = 1'000;

void insertBlock(QTextDocument& document, int number) {
  QTextCursor cursor(&document);
  if (number < document.blockCount())
    cursor.setPosition(document.findBlockByNumber(number).position());
  else
    cursor.movePosition(QTextCursor::End);
  cursor.insertBlock();
}

void removeBlock(QTextDocument& document, int number) {
  const QTextBlock block = document.findBlockByNumber(number);
  QTextCursor cursor(block);
  if (block.next().isValid()) {
    cursor.setPosition(block.next().position(), QTextCursor::KeepAnchor);
  } else {
    cursor.movePosition(QTextCursor::PreviousCharacter);
    cursor.movePosition(QTextCursor::End, QTextCursor::KeepAnchor);
  }
  cursor.removeSelectedText();
}

struct SameEnds {
  std::ptrdiff_t first = 0;  // so many blocks at the beginning are equal
  std::ptrdiff_t tail = 0;   // and so many at the end
};
SameEnds sameEnds(const MarkdownBlocks& before, const MarkdownBlocks& after) {
  const auto first = std::ranges::mismatch(before, after).in1;
  const auto rest =
      std::min(before.end() - first, after.end() - after.begin() - (first - before.begin()));
  const auto tail = std::ranges::mismatch(before.rbegin(), before.rbegin() + rest, after.rbegin(),
                                          after.rbegin() + rest);
  return {first - before.begin(), tail.in1 - before.rbegin()};
}

}  // namespace

void BodyDocument::fill(QTextDocument& document) {
  const auto after = segment().blocks ? segment().blocks : std::make_shared<const MarkdownBlocks>();
  const auto [first, tail] = sameEnds(*shown_, *after);
  // An empty document has one block already.
  const auto oldEnd = std::max<std::ptrdiff_t>(std::ssize(*shown_), 1) - tail;
  const auto newEnd = std::max<std::ptrdiff_t>(std::ssize(*after), 1) - tail;
  QTextCursor edit(&document);
  edit.beginEditBlock();
  for (auto number = oldEnd; number < newEnd; ++number)
    insertBlock(document, static_cast<int>(number));
  for (auto number = oldEnd; number > newEnd; --number)
    removeBlock(document, static_cast<int>(number) - 1);
  std::vector<QTextBlockFormat> formats(formats_.begin(), formats_.begin() + first);
  for (auto number = first; number < newEnd; ++number) {
    const DrawnBlock drawn =
        number < std::ssize(*after)
            ? BlockDrawing::drawn((*after)[static_cast<std::size_t>(number)], keyword(), *look())
            : DrawnBlock();
    BlockDrawing::write(document.findBlockByNumber(static_cast<int>(number)), drawn);
    formats.push_back(drawn.format);
  }
  formats.insert(formats.end(), formats_.end() - tail, formats_.end());
  formats_ = std::move(formats);
  shown_ = after;
  hasLongLine_ = false;
  for (const QString& line : segment().code().split(u'\n'))
    hasLongLine_ = hasLongLine_ || line.size() > longestLine;
  setFormats(document);
  edit.endEditBlock();
}

void BodyDocument::copyCode() const {
  CopiedText::toClipboard(segment().code());
}

void BodyDocument::restyle(QTextDocument& document) {
  QTextCursor edit(&document);
  edit.beginEditBlock();
  QTextBlock block = document.begin();
  for (std::size_t i = 0; i < shown_->size(); ++i, block = block.next()) {
    const DrawnBlock drawn = BlockDrawing::drawn((*shown_)[i], keyword(), *look());
    BlockDrawing::restyle(block, drawn);
    formats_[i] = drawn.format;
  }
  setFormats(document);
  edit.endEditBlock();
}

// The margin above depends on the neighbour, so that it may change where the block doesn't.
void BodyDocument::setFormats(QTextDocument& document) const {
  QTextBlock block = document.begin();
  for (std::size_t i = 0; i < shown_->size(); ++i, block = block.next()) {
    QTextBlockFormat format = formats_[i];
    format.setTopMargin(i > 0 ? BlockDrawing::gapBetween((*shown_)[i - 1], (*shown_)[i]) : 0);
    if (block.blockFormat() != format) QTextCursor(block).setBlockFormat(format);
  }
}

namespace {

// A line through each line of a text.
void addStrokes(const QTextBlock& block, QPointF corner, std::vector<BodyMarks::Mark>& marks) {
  constexpr qreal aboveBaseline = 0.32;  // of the ascent: through the middle of ideographs
  const QTextLayout& layout = *block.layout();
  for (int i = 0; i < layout.lineCount(); ++i) {
    const QTextLine line = layout.lineAt(i);
    const QRectF text = line.naturalTextRect().translated(corner);
    marks.push_back({.kind = BodyMarks::Stroke,
                     .top = std::round(text.top() + line.ascent() * (1 - aboveBaseline)),
                     .height = 1,
                     .left = text.left(),
                     .width = text.width()});
  }
}

}  // namespace

std::vector<BodyMarks::Mark> BodyDocument::placedMarks(QTextDocument& document) const {
  std::vector<BodyMarks::Mark> marks;
  const bool isShown = segment().blocks && segment().blocks->size() == shown_->size() &&
                       document.blockCount() == std::ssize(*shown_);
  if (!isShown) return marks;
  const QAbstractTextDocumentLayout& layout = *document.documentLayout();
  QTextBlock block = document.begin();
  bool followsQuote = false;
  for (const MarkdownBlock& each : *segment().blocks) {
    const auto* const item = std::get_if<markdown::CheckItem>(&each);
    const bool isQuote = std::holds_alternative<markdown::Blockquote>(each);
    if (item != nullptr || isQuote) {
      const QRectF area = layout.blockBoundingRect(block);
      const bool isMirrored = block.blockFormat().layoutDirection() == Qt::RightToLeft;
      if (item != nullptr) {
        const QTextLine line = block.layout()->lineAt(0);
        marks.push_back({.kind = BodyMarks::Box,
                         .top = area.top() + (line.isValid() ? line.y() : 0),
                         .height = line.isValid() ? line.height() : area.height(),
                         .isChecked = item->checked,
                         .line = static_cast<int>(item->line),
                         .label = block.text(),
                         .isMirrored = isMirrored});
        if (item->checked) addStrokes(block, area.topLeft(), marks);
      } else if (followsQuote) {
        marks.back().height = area.bottom() - marks.back().top;
      } else {
        marks.push_back({.kind = BodyMarks::Bar,
                         .top = area.top(),
                         .height = area.height(),
                         .isMirrored = isMirrored});
      }
    }
    followsQuote = isQuote;
    block = block.next();
  }
  return marks;
}

}  // namespace nomely
