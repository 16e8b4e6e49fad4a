#pragma once

#include <QObject>

#include "Core/Markdown/Editing/MarkdownCommandTextView.h"

class QKeyEvent;
class QMouseEvent;
class QQuickItem;

namespace nomely {

class TagCompletion;

// Sees the keys of a text area before it, so that Markdown's own act first: lists that go on,
// indenting, bold. Tab always indents; F6 and Escape lead out.
//
// While an input method composes, every key that would act on the text as a command is swallowed:
// what is being composed isn't part of the text yet. A click, and a key that moves the caret, make
// it text first. Main thread.
class EditorKeyFilter final : public QObject {
  Q_OBJECT

 public:
  // What is given must outlive it. Watches `area`.
  EditorKeyFilter(QQuickItem& area, MarkdownCommandTextView& commands, TagCompletion& completion);

  bool eventFilter(QObject* watched, QEvent* event) override;

 signals:
  void submitted();
  void escaped();
  void pasteAsked(bool fromSelection);
  void plainPasteAsked();
  // At that place of the area.
  void menuAsked(QPointF at);

 private:
  [[nodiscard]] bool claims(const QKeyEvent& key) const;
  [[nodiscard]] bool press(const QKeyEvent& key);
  [[nodiscard]] bool clickMouse(const QMouseEvent& mouse);
  [[nodiscard]] bool breakLine(const QKeyEvent& key);

  QQuickItem& area_;
  MarkdownCommandTextView& commands_;
  TagCompletion& completion_;
};

}  // namespace nomely
