#pragma once

#include <QDate>
#include <QObject>
#include <QString>
#include <QStringList>

#include <QtQml/qqmlregistration.h>

#include "Core/Query/MemoEntry.h"

namespace nomely {

// A memo of a list as QML passes it about: shared, never changed. An empty one stands for none.
struct MemoHandle {
  Q_GADGET
  QML_VALUE_TYPE(memoHandle)
  Q_PROPERTY(bool isValid READ isValid)
  Q_PROPERTY(QString key READ key)
  Q_PROPERTY(QDate date READ date)
  Q_PROPERTY(QString time READ time)
  Q_PROPERTY(QString body READ body)
  Q_PROPERTY(QStringList tags READ tags)
  Q_PROPERTY(QString mood READ mood)
  Q_PROPERTY(QString source READ source)
  Q_PROPERTY(bool pinned READ isPinned)
  Q_PROPERTY(bool lockedOnTop READ isLockedOnTop)
  Q_PROPERTY(int seqNumber READ seqNumber)

 public:
  MemoEntry entry{.date = Day({}), .memo = nullptr};

  [[nodiscard]] bool isValid() const { return entry.memo != nullptr; }
  // The same however the memo changes: its identity, or its place while it has none.
  [[nodiscard]] QString key() const;
  [[nodiscard]] QDate date() const;
  [[nodiscard]] QString time() const;
  // As an editor shows it: without the comment that keeps the text from before an AI action.
  [[nodiscard]] QString body() const;
  [[nodiscard]] QStringList tags() const;  // those that show
  [[nodiscard]] QString mood() const;      // as an emoji
  [[nodiscard]] QString source() const;    // empty for memos that were typed here
  [[nodiscard]] bool isPinned() const { return isValid() && entry.memo->pinned; }
  [[nodiscard]] bool isLockedOnTop() const { return isValid() && entry.memo->lockedOnTop; }
  [[nodiscard]] int seqNumber() const;

  friend bool operator==(const MemoHandle& left, const MemoHandle& right) {
    return left.entry.memo == right.entry.memo && left.entry.date == right.entry.date;
  }
};

}  // namespace nomely
