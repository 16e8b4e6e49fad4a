#pragma once

#include <QObject>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Base/BackgroundWork.h"
#include "Desktop/Base/ScreenContext.h"
#include "Desktop/Models/MemoHandle.h"

namespace nomely {

// What a user does inside a card: ticking items off, following links, copying, reading a long memo
// on a page of its own. Main thread.
class CardActions : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the window")
  // The memo whose whole body is read; an empty one for none.
  Q_PROPERTY(nomely::MemoHandle reading READ reading NOTIFY readingChanged)

 public:
  explicit CardActions(const ScreenContext& context);

  [[nodiscard]] const MemoHandle& reading() const { return reading_; }
  Q_INVOKABLE void read(const nomely::MemoHandle& memo);
  Q_INVOKABLE void stopReading() { read({}); }

  // Ticks the check item on that line of what is shown of the body, or takes the tick off. A line
  // that is no check item stays.
  Q_INVOKABLE void tick(const nomely::MemoHandle& memo, int line);

  Q_INVOKABLE void copyText(const nomely::MemoHandle& memo);
  Q_INVOKABLE void copyMarkdown(const nomely::MemoHandle& memo);
  // A fragment with the memo's pictures, which are read in the background first.
  Q_INVOKABLE void copyHtml(const nomely::MemoHandle& memo);

  // Hands the address to the desktop. One that is no page and no mail address is refused: a memo
  // may come from elsewhere, and a click must not start a program.
  Q_INVOKABLE void openLink(const QString& address);

 signals:
  void readingChanged();

 private:
  const ScreenContext context_;
  MemoHandle reading_;
  BackgroundWork work_;
};

}  // namespace nomely
