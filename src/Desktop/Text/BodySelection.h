#pragma once

#include <QPointer>
#include <QQuickItem>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Models/MemoHandle.h"

class QTextDocument;

namespace nomely {

// Around the texts of one body: a drag, a click with Shift, and Ctrl+A select across all of them as
// if they were one; Ctrl+C copies what is selected as text and HTML, and without a selection the
// memo's Markdown. Texts hand their keys on to it (Keys.forwardTo), and let their selection
// persist. What is selected here goes when a text elsewhere takes the focus. Main thread.
class BodySelection : public QQuickItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(nomely::MemoHandle memo READ memo WRITE setMemo NOTIFY memoChanged)

 public:
  explicit BodySelection(QQuickItem* parent = nullptr);

  [[nodiscard]] const MemoHandle& memo() const { return memo_; }
  // The selection of another memo is none of this one's.
  void setMemo(const MemoHandle& memo);

  [[nodiscard]] Q_INVOKABLE bool hasSelection() const;
  [[nodiscard]] Q_INVOKABLE QString selectedText() const;
  Q_INVOKABLE void selectAll();
  Q_INVOKABLE void clear();
  Q_INVOKABLE void copy() const;

 signals:
  void memoChanged();
  // A text was clicked, and nothing selected.
  void tapped();

 protected:
  bool childMouseEventFilter(QQuickItem* item, QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  // From the top of the body to its end.
  [[nodiscard]] std::vector<QQuickItem*> texts() const;
  [[nodiscard]] QQuickItem* textNearest(QPointF scenePosition) const;
  bool press(QQuickItem* item, const QMouseEvent& event);
  bool drag(const QMouseEvent& event);
  void extendTo(QPointF scenePosition);
  void followFocus();

  MemoHandle memo_;
  QPointer<QQuickItem> anchor_;  // the text in which a selection began
  int anchorPosition_ = 0;
  bool spansTexts_ = false;  // the drag that goes on has left the text where it began
};

}  // namespace nomely
