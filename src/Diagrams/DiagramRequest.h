#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace nomely {

// One line of standard input: {"id", "code", "dark", "scale", "svg"}; `svg` is what an earlier
// answer gave for the same source.
struct DiagramRequest {
  qint64 id = 0;
  QString code;
  QString svg;
  bool isDark = false;
  double scale = 1;

  // Absent for what is no request.
  [[nodiscard]] static std::optional<DiagramRequest> read(const QByteArray& line);
};

}  // namespace nomely
