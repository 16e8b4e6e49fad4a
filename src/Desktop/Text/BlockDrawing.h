#pragma once

#include <QColor>
#include <QString>
#include <QTextBlockFormat>
#include <QTextCharFormat>
#include <vector>

#include "Core/Markdown/Blocks/MarkdownBlock.h"

class QTextBlock;

namespace nomely {

class BodyLook;

// One block of a body as a paragraph of a QTextDocument: its line breaks are line separators.
struct DrawnBlock {
  struct Stretch {
    qsizetype length = 0;
    QTextCharFormat format;
  };

  QString text;
  std::vector<Stretch> stretches;  // of the whole text
  QTextBlockFormat format;         // but for the margin above
};

// How blocks look. Main thread.
namespace BlockDrawing {

// What a paragraph is, for those who have nothing but the document.
enum class Role { text, heading, bullet, number, check, quote, code };
[[nodiscard]] Role roleOf(const QTextBlockFormat& format);

// Whether a text is that of an item that is ticked off. The line through it is a mark of BodyMarks:
// the renderer leaves out the lines of a text that are thinner than a pixel wherever they fall
// between two.
[[nodiscard]] bool isDone(const QTextCharFormat& format);

// The marker that the text of an item begins with, the tab after it included: "1.\t".
[[nodiscard]] qsizetype markerLength(const QTextBlockFormat& format);

// The room left of the text of an item, for its marker or box; pixels.
constexpr int itemIndent = 26;
constexpr int quoteIndent = 14;

// Every case but a table, a diagram and a rule. Of a callout it is the body; code is plain.
[[nodiscard]] DrawnBlock drawn(const MarkdownBlock& block, const QString& keyword,
                               const BodyLook& look);
// A text of one line or more that stands for itself, as in a cell.
[[nodiscard]] DrawnBlock drawnText(std::string_view inlineText, const QString& keyword,
                                   const BodyLook& look);

// Puts a drawn text into a block, in place of what it holds.
void write(const QTextBlock& block, const DrawnBlock& drawn);
// Gives a block that holds this text its looks; what is selected stays selected.
void restyle(const QTextBlock& block, const DrawnBlock& drawn);

// The space between two neighbours, pixels.
[[nodiscard]] int gapBetween(const MarkdownBlock& above, const MarkdownBlock& below);

// `color`, or the nearest one to it that can be read on `ground`.
[[nodiscard]] QColor readable(const QColor& color, const QColor& ground);

}  // namespace BlockDrawing

}  // namespace nomely
