#include "Desktop/Models/TagStyles.h"

#include "Desktop/Base/Qt.h"

namespace nomely {

QString TagStyles::valueIn(const std::map<std::string, std::string>& values, const QString& tag) {
  const auto found = values.find(utf8(tag));
  return found == values.end() ? QString() : qt(found->second);
}

QString TagStyles::emojiOf(const QString& tag) const {
  return valueIn(config->emojis, tag);
}

QString TagStyles::colorOf(const QString& tag) const {
  return valueIn(config->colors, tag);
}

}  // namespace nomely
