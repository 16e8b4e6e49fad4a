#include "Diagrams/DiagramRequest.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>

namespace nomely {

std::optional<DiagramRequest> DiagramRequest::read(const QByteArray& line) {
  const QJsonObject object = QJsonDocument::fromJson(line).object();
  if (!object["id"].isDouble() || !object["code"].isString()) return std::nullopt;
  return DiagramRequest{
      .id = object["id"].toInteger(),
      .code = object["code"].toString(),
      .svg = object["svg"].toString(),
      .isDark = object["dark"].toBool(),
      .scale = std::clamp(object["scale"].toDouble(1), 0.5, 4.0),
  };
}

}  // namespace nomely
