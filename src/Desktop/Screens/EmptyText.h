#pragma once

#include <QDate>
#include <QObject>
#include <QString>

#include <QtQml/qqmlregistration.h>

namespace nomely {

// What stands where a list is empty: one sentence, and one thing to do about it. Pure.
struct EmptyText {
  Q_GADGET
  QML_VALUE_TYPE(emptyText)
  Q_PROPERTY(QString glyph MEMBER glyph)
  Q_PROPERTY(QString text MEMBER text)
  Q_PROPERTY(QString note MEMBER note)
  Q_PROPERTY(QString actionText MEMBER actionText)
  Q_PROPERTY(Action action MEMBER action)

 public:
  enum class Action { None, Write, ShowAll, AddFile };
  Q_ENUM(Action)
  enum class List {
    all,
    today,
    day,
    pinned,
    onThisDay,
    tag,
    untagged,
    images,
    links,
    audio,
    attachments,
    search
  };

  QString glyph;
  QString text;
  QString note = {};
  QString actionText = {};
  Action action = Action::None;

  // `name` is the tag or the words that were searched for.
  [[nodiscard]] static EmptyText of(List list, const QString& name = {}, QDate day = {});

  friend bool operator==(const EmptyText&, const EmptyText&) = default;
};

}  // namespace nomely
