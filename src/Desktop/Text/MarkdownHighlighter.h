#pragma once

#include <QColor>
#include <QSyntaxHighlighter>
#include <QTimer>
#include <optional>

#include <QtQml/qqmlregistration.h>

class QTextDocument;

namespace nomely {

// Colours Markdown while it is being written: marks stay visible but weak, so that the caret never
// jumps. Formats belong to the layout alone; the text and its undo steps don't know of them.
//
// Much text at once (a memo opened, a page pasted, a fence opened above it) is done in slices, from
// the top, so that no frame waits. Main thread.
class MarkdownHighlighter final : public QSyntaxHighlighter {
  Q_OBJECT
  QML_ANONYMOUS
  Q_PROPERTY(QColor weak MEMBER weak_ NOTIFY looksChanged)      // marks
  Q_PROPERTY(QColor quote MEMBER quote_ NOTIFY looksChanged)    // quotes, what is ticked
  Q_PROPERTY(QColor accent MEMBER accent_ NOTIFY looksChanged)  // tags
  Q_PROPERTY(QColor link MEMBER link_ NOTIFY looksChanged)
  Q_PROPERTY(QColor code MEMBER code_ NOTIFY looksChanged)  // its background
  Q_PROPERTY(QString codeFamily MEMBER codeFamily_ NOTIFY looksChanged)
  // Pixels of a heading of the first level and of the text; the levels between lie in equal steps.
  Q_PROPERTY(int headingSize MEMBER headingSize_ NOTIFY looksChanged)
  Q_PROPERTY(int textSize MEMBER textSize_ NOTIFY looksChanged)

 public:
  explicit MarkdownHighlighter(QObject* parent);

  // Whether that block lies inside a fence, or opens or closes one.
  [[nodiscard]] static bool isCode(const QTextBlock& block);
  // Whether blocks are still waiting for their slice.
  [[nodiscard]] bool isBusy() const { return rest_.has_value(); }
  // Whether what the document tells of now is a change of looks alone.
  [[nodiscard]] bool isInSlice() const { return inSlice_; }

 signals:
  void looksChanged();

 protected:
  void highlightBlock(const QString& text) override;

 private:
  void highlightSlice();
  void highlightAll();
  void defer(int block);
  void highlightLine(const QString& text);
  void highlightInline(const QString& text, int begin);
  void mark(int begin, int length);

  QColor weak_;
  QColor quote_;
  QColor accent_;
  QColor link_;
  QColor code_;
  QString codeFamily_;
  int headingSize_ = 0;
  int textSize_ = 0;

  std::optional<int> rest_;   // the first block that waits; all below it do
  qsizetype doneInTurn_ = 0;  // characters since the event loop last turned
  bool inSlice_ = false;
  QTimer turn_;
  QTimer restyle_;
};

}  // namespace nomely
