#include "Desktop/Text/TableDocument.h"

#include <QAbstractTextDocumentLayout>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextTable>
#include <algorithm>
#include <numeric>

#include "Core/Markdown/Tables/MarkdownTableLayout.h"
#include "Desktop/Text/BlockDrawing.h"

namespace nomely {
namespace {

constexpr int sidePadding = 12;
constexpr int edgePadding = 7;
constexpr int mostColumns = 100;

QTextTable* tableOf(const QTextDocument& document) {
  const auto frames = document.rootFrame()->childFrames();
  return frames.isEmpty() ? nullptr : qobject_cast<QTextTable*>(frames.first());
}

// Calls visit(cell, text) for every cell that is shown.
template <typename Visit>
void forEachCell(QTextTable& table, const MarkdownTable& source, Visit visit) {
  for (int row = 0; row < table.rows(); ++row) {
    const auto& texts = row == 0 ? source.headers : source.rows[static_cast<std::size_t>(row) - 1];
    for (int column = 0; column < table.columns(); ++column)
      visit(table.cellAt(row, column), texts[static_cast<std::size_t>(column)]);
  }
}

DrawnBlock drawnCell(const QTextTableCell& cell, const std::string& text, const QString& keyword,
                     const BodyLook& look) {
  DrawnBlock drawn = BlockDrawing::drawnText(text, keyword, look);
  for (DrawnBlock::Stretch& stretch : drawn.stretches)
    if (cell.row() == 0) stretch.format.setFontWeight(QFont::Bold);
  return drawn;
}

}  // namespace

void TableDocument::setContainerWidth(qreal width) {
  if (width == containerWidth_) return;
  containerWidth_ = width;
  if (isReady()) layOut(*document()->textDocument());
  emit laidOut();
}

void TableDocument::fill(QTextDocument& document) {
  document.clear();
  const MarkdownTable* source = shownTable();
  hiddenColumns_ = 0;
  if (source == nullptr) return;
  const auto columns = static_cast<int>(source->headers.size());
  hiddenColumns_ = std::max(columns - mostColumns, 0);
  QTextTableFormat format;
  format.setBorder(0);
  format.setCellPadding(0);
  format.setCellSpacing(0);
  QTextCursor cursor(&document);
  cursor.beginEditBlock();
  QTextTable& table = *cursor.insertTable(static_cast<int>(source->rows.size()) + 1,
                                          columns - hiddenColumns_, format);
  QTextTableCellFormat padding;
  padding.setLeftPadding(sidePadding);
  padding.setRightPadding(sidePadding);
  padding.setTopPadding(edgePadding);
  padding.setBottomPadding(edgePadding);
  forEachCell(table, *source, [&](QTextTableCell cell, const std::string& text) {
    const DrawnBlock drawn = drawnCell(cell, text, keyword(), *look());
    BlockDrawing::write(cell.firstCursorPosition().block(), drawn);
    cell.firstCursorPosition().setBlockFormat(drawn.format);
    cell.setFormat(padding);
  });
  cursor.endEditBlock();
  layOut(document);
}

void TableDocument::restyle(QTextDocument& document) {
  QTextTable* const table = tableOf(document);
  const MarkdownTable* const source = shownTable();
  if (table == nullptr || source == nullptr) return;
  QTextCursor cursor(&document);
  cursor.beginEditBlock();
  forEachCell(*table, *source, [&](const QTextTableCell& cell, const std::string& text) {
    BlockDrawing::restyle(cell.firstCursorPosition().block(),
                          drawnCell(cell, text, keyword(), *look()));
  });
  cursor.endEditBlock();
}

void TableDocument::layOut(QTextDocument& document) {
  QTextTable* const table = tableOf(document);
  const MarkdownTable* const source = shownTable();
  if (table == nullptr || source == nullptr) return;
  const double container =
      containerWidth_ > 0 ? containerWidth_ : MarkdownTableLayout::unknownContainerWidth;
  std::vector<double> widths = MarkdownTableLayout::columnWidths(*source, container);
  widths.resize(static_cast<std::size_t>(table->columns()));
  QList<QTextLength> constraints;
  tableWidth_ = 0;
  for (const double width : widths) {
    constraints.append(QTextLength(QTextLength::FixedLength, width + 2 * sidePadding));
    tableWidth_ += width + 2 * sidePadding;
  }
  QTextTableFormat format = table->format();
  format.setColumnWidthConstraints(constraints);
  table->setFormat(format);
  emit laidOut();
}

const MarkdownTable* TableDocument::shownTable() const {
  const bool isTable = segment().kind == BodySegment::Table && segment().blocks;
  return isTable ? std::get_if<MarkdownTable>(&segment().blocks->front()) : nullptr;
}

std::vector<BodyMarks::Mark> TableDocument::placedMarks(QTextDocument& document) const {
  std::vector<BodyMarks::Mark> rows;
  QTextTable* const table = tableOf(document);
  if (table == nullptr) return rows;
  const QAbstractTextDocumentLayout& layout = *document.documentLayout();
  for (int row = 0; row < table->rows(); ++row) {
    const QTextBlock block = table->cellAt(row, 0).firstCursorPosition().block();
    const qreal top = layout.blockBoundingRect(block).top() - edgePadding;
    if (!rows.empty()) rows.back().height = top - rows.back().top;
    rows.push_back({.kind = BodyMarks::Row, .top = top});
  }
  rows.back().height = layout.frameBoundingRect(table).bottom() - rows.back().top;
  return rows;
}

}  // namespace nomely
