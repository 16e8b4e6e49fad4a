#pragma once

#include <QString>

namespace nomely {

// Where the pages stand: in the program's folder, or in the folder "Mermaid" there. Empty for a
// page that is missing.
[[nodiscard]] QString pagePath(const QString& name);

}  // namespace nomely
