#pragma once

#include <QObject>
#include <QString>

#include <QtQml/qqmlregistration.h>

namespace nomely {

// What a screen asks before it goes on. One without a title asks nothing.
struct Question {
  Q_GADGET
  QML_VALUE_TYPE(question)
  Q_PROPERTY(QString title MEMBER title)
  Q_PROPERTY(QString text MEMBER text)
  Q_PROPERTY(QString confirmText MEMBER confirmText)
  Q_PROPERTY(bool isDestructive MEMBER isDestructive)
  Q_PROPERTY(bool isAsked READ isAsked)

 public:
  QString title;
  QString text;
  QString confirmText;
  bool isDestructive = true;

  [[nodiscard]] bool isAsked() const { return !title.isEmpty(); }

  friend bool operator==(const Question&, const Question&) = default;
};

}  // namespace nomely
