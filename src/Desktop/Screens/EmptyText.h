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
  // Where the action leads: to the list of all notes, else to the input.
  Q_PROPERTY(bool leadsToAll MEMBER leadsToAll)

 public:
  enum class List {
    today,
    day,
    all,
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
  bool leadsToAll = false;

  // `name` is the tag or the words that were searched for.
  [[nodiscard]] static EmptyText of(List list, const QString& name = {}, QDate day = {});

  friend bool operator==(const EmptyText&, const EmptyText&) = default;
};

}  // namespace nomely
