#include "Desktop/Text/ChangedText.h"

#include <QTextCharFormat>
#include <QTextCursor>
#include <QTextDocument>
#include <algorithm>

#include "Desktop/Base/Qt.h"

namespace nomely {
namespace {

// About three lines on either side of a change.
constexpr qsizetype context = 90;
const QString leftOut = QStringLiteral(" ⋯ ");

// The end of the sentence or clause that `at` is in, or `at` itself in a text without any.
qsizetype breakFrom(const QString& text, qsizetype at) {
  const auto isBreak = [](QChar character) {
    return character == QLatin1Char('\n') || character == u'。' || character == u'，';
  };
  const auto end = text.begin() + std::min(at + context, text.size());
  const auto found = std::find_if(text.begin() + at, end, isBreak);
  return found == end ? at : found - text.begin() + 1;
}

QTextCharFormat formatOf(const QColor& ink, const QColor& background) {
  QTextCharFormat format;
  format.setForeground(ink);
  format.setBackground(background);
  return format;
}

}  // namespace

ChangedText::ChangedText(QObject* parent) : QObject(parent) {
  connect(this, &ChangedText::changed, this, &ChangedText::fill);
}

void ChangedText::fill() {
  if (!document_) return;
  QTextDocument& document = *document_->textDocument();
  document.setUndoRedoEnabled(false);
  document.clear();
  if (!changes_.comparison) return;
  QTextCharFormat weak;
  weak.setForeground(weak_);
  QTextCharFormat added = formatOf(added_, addedBackground_);
  added.setFontUnderline(true);
  QTextCharFormat removed = formatOf(removed_, removedBackground_);
  removed.setFontStrikeOut(true);

  QTextCursor cursor(&document);
  cursor.beginEditBlock();
  const auto& words = changes_.comparison->words();
  for (std::size_t i = 0; i < words.size(); ++i) {
    const QString text = qt(words[i].text);
    if (words[i].kind != WordChange::Kind::same) {
      cursor.insertText(text, words[i].kind == WordChange::Kind::added ? added : removed);
      continue;
    }
    const qsizetype head = i == 0 ? 0 : breakFrom(text, std::min(context, text.size()));
    const qsizetype tail = i + 1 == words.size() ? text.size() : text.size() - context;
    if (tail - head < 2 * context) {
      cursor.insertText(text, {});
      continue;
    }
    cursor.insertText(text.left(head), {});
    cursor.insertText(leftOut, weak);
    cursor.insertText(text.mid(breakFrom(text, tail)), {});
  }
  cursor.endEditBlock();
}

}  // namespace nomely
