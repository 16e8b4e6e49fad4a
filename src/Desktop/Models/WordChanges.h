#pragma once

#include <QObject>
#include <memory>

#include <QtQml/qqmlregistration.h>

#include "Editor/History/VersionComparison.h"

namespace nomely {

// A comparison as QML passes it about: shared, never changed. An empty one stands for none.
struct WordChanges {
  Q_GADGET
  QML_VALUE_TYPE(wordChanges)

 public:
  std::shared_ptr<const VersionComparison> comparison = {};

  friend bool operator==(const WordChanges&, const WordChanges&) = default;
};

}  // namespace nomely
