#pragma once

#include <QColor>
#include <QObject>
#include <QQuickTextDocument>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Models/WordChanges.h"

namespace nomely {

// Fills the document of a TextEdit with a comparison: what was added and what was removed are told
// apart by colour and by a line, and long stretches without a change are shortened. Main thread.
class ChangedText : public QObject {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QQuickTextDocument* document MEMBER document_ NOTIFY changed)
  Q_PROPERTY(nomely::WordChanges changes MEMBER changes_ NOTIFY changed)
  Q_PROPERTY(QColor added MEMBER added_ NOTIFY changed)
  Q_PROPERTY(QColor addedBackground MEMBER addedBackground_ NOTIFY changed)
  Q_PROPERTY(QColor removed MEMBER removed_ NOTIFY changed)
  Q_PROPERTY(QColor removedBackground MEMBER removedBackground_ NOTIFY changed)
  Q_PROPERTY(QColor weak MEMBER weak_ NOTIFY changed)

 public:
  explicit ChangedText(QObject* parent = nullptr);

 signals:
  void changed();

 private:
  void fill();

  QQuickTextDocument* document_ = nullptr;
  WordChanges changes_;
  QColor added_;
  QColor addedBackground_;
  QColor removed_;
  QColor removedBackground_;
  QColor weak_;
};

}  // namespace nomely
