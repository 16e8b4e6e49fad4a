#pragma once

#include <QJsonObject>

namespace nomely {

// The colours that the library derives a diagram's look from, to go with the window's cards.
[[nodiscard]] QJsonObject diagramLook(bool isDark);

}  // namespace nomely
