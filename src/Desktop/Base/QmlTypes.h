#pragma once

#include <QDate>
#include <QObject>
#include <QStringListModel>

#include <QtQml/qqmlregistration.h>

namespace nomely {

// Types of Qt that properties have and that its own modules describe to no linter.
struct QmlDate {
  Q_GADGET
  QML_FOREIGN(QDate)
  QML_ANONYMOUS
};
struct QmlStringListModel {
  Q_GADGET
  QML_FOREIGN(QStringListModel)
  QML_ANONYMOUS
};

}  // namespace nomely
