#include "Desktop/Text/SelectedText.h"

#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextTable>
#include <algorithm>

#include "Desktop/Text/BlockDrawing.h"

namespace nomely {
namespace {

using BlockDrawing::Role;

// The part of a block between two places of the document.
struct Part {
  QTextBlock block;
  int from = 0;
  int to = 0;

  [[nodiscard]] QString text() const {
    QString part = block.text().mid(from - block.position(), to - from);
    part.replace(QChar::LineSeparator, u'\n');
    // The tab after a marker is for the eye.
    const auto marker = BlockDrawing::markerLength(block.blockFormat());
    if (marker > 0 && from == block.position() && part.size() >= marker) part[marker - 1] = u' ';
    return part;
  }
  [[nodiscard]] QTextTableCell cell() const {
    QTextTable* const table = QTextCursor(block).currentTable();
    return table != nullptr ? table->cellAt(block.position()) : QTextTableCell();
  }
};

template <typename Visit>
void forEachPart(const QTextDocument& document, int from, int to, Visit visit) {
  for (QTextBlock block = document.findBlock(from); block.isValid() && block.position() <= to;
       block = block.next()) {
    const int begin = std::max(from, block.position());
    const int end = std::min(to, block.position() + block.length() - 1);
    // A document has an empty block on either side of a table.
    const bool isBesideTable = block.length() == 1 &&
                               QTextCursor(block).currentTable() == nullptr &&
                               !document.rootFrame()->childFrames().isEmpty();
    if (end >= begin && !isBesideTable) visit(Part{block, begin, end});
  }
}

QString element(const QString& name, const QString& content) {
  return u'<' + name + u'>' + content + QStringLiteral("</") + name.section(u' ', 0, 0) + u'>';
}

QString inlineHtml(const Part& part) {
  QString html;
  const auto marker = static_cast<int>(BlockDrawing::markerLength(part.block.blockFormat()));
  const int from = std::max(part.from, part.block.position() + marker);
  for (auto it = part.block.begin(); !it.atEnd(); ++it) {
    const QTextFragment fragment = it.fragment();
    const int begin = std::max(from, fragment.position());
    const int end = std::min(part.to, fragment.position() + fragment.length());
    if (begin >= end) continue;
    QString text = fragment.text().mid(begin - fragment.position(), end - begin).toHtmlEscaped();
    text.replace(QChar::LineSeparator, QStringLiteral("<br>"));
    const QTextCharFormat format = fragment.charFormat();
    const bool isHeading = part.block.blockFormat().headingLevel() > 0;
    if (format.fontFixedPitch()) text = element(QStringLiteral("code"), text);
    if (format.fontWeight() > QFont::Normal && !isHeading)
      text = element(QStringLiteral("strong"), text);
    if (format.fontItalic()) text = element(QStringLiteral("em"), text);
    if (format.fontStrikeOut() || BlockDrawing::isDone(format))
      text = element(QStringLiteral("s"), text);
    if (format.isAnchor())
      text =
          element(QStringLiteral("a href=\"%1\"").arg(format.anchorHref().toHtmlEscaped()), text);
    html += text;
  }
  return html;
}

// Elements around neighbours of one kind, as those of a list are.
QString groupOf(const Part& part) {
  if (part.cell().isValid()) return QStringLiteral("table");
  switch (BlockDrawing::roleOf(part.block.blockFormat())) {
    case Role::bullet:
    case Role::check:
      return QStringLiteral("ul");
    case Role::number:
      return QStringLiteral("ol");
    default:
      return {};
  }
}

QString blockHtml(const Part& part) {
  const QTextBlockFormat format = part.block.blockFormat();
  const QString content = inlineHtml(part);
  switch (BlockDrawing::roleOf(format)) {
    case Role::heading:
      return element(QStringLiteral("h%1").arg(format.headingLevel()), content);
    case Role::bullet:
    case Role::number:
    case Role::check:
      return element(QStringLiteral("li"), content);
    case Role::quote:
      return element(QStringLiteral("blockquote"), content);
    case Role::code:
      return element(QStringLiteral("pre"), part.text().toHtmlEscaped());
    case Role::text:
      break;
  }
  return element(QStringLiteral("p"), content);
}

}  // namespace

QString SelectedText::plain(const QTextDocument& document, int from, int to) {
  QString text;
  bool isFirst = true;
  int row = -1;
  forEachPart(document, from, to, [&](const Part& part) {
    const QTextTableCell cell = part.cell();
    const bool isSameRow = cell.isValid() && cell.row() == row;
    if (!isFirst) text += isSameRow ? u'\t' : u'\n';
    text += part.text();
    row = cell.isValid() ? cell.row() : -1;
    isFirst = false;
  });
  return text;
}

QString SelectedText::html(const QTextDocument& document, int from, int to) {
  QString html;
  QString group;
  int row = -1;
  const auto enter = [&](const QString& next) {
    if (next == group) return;
    if (row >= 0) html += QStringLiteral("</tr>");
    row = -1;
    if (!group.isEmpty()) html += QStringLiteral("</%1>").arg(group);
    if (!next.isEmpty()) html += QStringLiteral("<%1>").arg(next);
    group = next;
  };
  forEachPart(document, from, to, [&](const Part& part) {
    enter(groupOf(part));
    const QTextTableCell cell = part.cell();
    if (!cell.isValid()) {
      html += blockHtml(part);
      return;
    }
    if (cell.row() != row) html += row >= 0 ? QStringLiteral("</tr><tr>") : QStringLiteral("<tr>");
    row = cell.row();
    html += element(row == 0 ? QStringLiteral("th") : QStringLiteral("td"), inlineHtml(part));
  });
  enter({});
  return html;
}

}  // namespace nomely
