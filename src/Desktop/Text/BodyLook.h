#pragma once

#include <QColor>
#include <QObject>
#include <QString>

#include <QtQml/qqmlregistration.h>

namespace nomely {

// The colours, faces and sizes with which bodies are drawn, bound to the window's theme. One for
// all of them.
class BodyLook : public QObject {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QColor text MEMBER text NOTIFY changed)
  Q_PROPERTY(QColor quoteText MEMBER quoteText NOTIFY changed)
  Q_PROPERTY(QColor doneText MEMBER doneText NOTIFY changed)
  Q_PROPERTY(QColor markerText MEMBER markerText NOTIFY changed)
  Q_PROPERTY(QColor tag MEMBER tag NOTIFY changed)
  Q_PROPERTY(QColor link MEMBER link NOTIFY changed)
  Q_PROPERTY(QColor ground MEMBER ground NOTIFY changed)
  Q_PROPERTY(QColor codeGround MEMBER codeGround NOTIFY changed)
  Q_PROPERTY(QColor hitGround MEMBER hitGround NOTIFY changed)
  Q_PROPERTY(QColor hitText MEMBER hitText NOTIFY changed)
  Q_PROPERTY(QString sans MEMBER sans NOTIFY changed)
  Q_PROPERTY(QString serif MEMBER serif NOTIFY changed)
  Q_PROPERTY(QString mono MEMBER mono NOTIFY changed)
  Q_PROPERTY(qreal size MEMBER size NOTIFY changed)
  Q_PROPERTY(int lineHeight MEMBER lineHeight NOTIFY changed)

 public:
  using QObject::QObject;

  QColor text;
  QColor quoteText;
  QColor doneText;  // of items that are ticked off
  QColor markerText;
  QColor tag;
  QColor link;
  QColor ground;  // what all of it stands on
  QColor codeGround;
  QColor hitGround;  // of what a search looked for
  QColor hitText;
  QString sans;
  QString serif;
  QString mono;
  qreal size = 15;       // pixels
  int lineHeight = 100;  // per cent of the face's own

 signals:
  void changed();
};

}  // namespace nomely
