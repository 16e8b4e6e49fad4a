#pragma once

#include <QObject>
#include <QString>
#include <map>
#include <memory>
#include <string>

#include <QtQml/qqmlregistration.h>

#include "Core/Storage/TagConfig.h"

namespace nomely {

// How the user has dressed tags, as QML passes it about. A value.
struct TagStyles {
  Q_GADGET
  QML_VALUE_TYPE(tagStyles)

 public:
  std::shared_ptr<const TagConfig> config = std::make_shared<const TagConfig>();

  // Empty where there is none; a colour is "#RRGGBB".
  Q_INVOKABLE [[nodiscard]] QString emojiOf(const QString& tag) const;
  Q_INVOKABLE [[nodiscard]] QString colorOf(const QString& tag) const;

  // The same in one of a configuration's maps.
  [[nodiscard]] static QString valueIn(const std::map<std::string, std::string>& values,
                                       const QString& tag);

  friend bool operator==(const TagStyles& left, const TagStyles& right) {
    return left.config == right.config;
  }
};

}  // namespace nomely
