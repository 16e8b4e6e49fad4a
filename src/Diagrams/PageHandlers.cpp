#include "Diagrams/PageHandlers.h"

#include <algorithm>

namespace nomely {
namespace {

constexpr qsizetype longestPicture = qsizetype{3} << 20;
constexpr qsizetype longestMarkup = qsizetype{1} << 19;
constexpr qsizetype longestMessage = 2000;

}  // namespace

void PageHandlers::clear() {
  answer_ = {};
}

void PageHandlers::mermaidHeight(const QJsonValue& points) {
  const double height = points.toDouble();
  if (height > 0) answer_["height"] = std::clamp(height, leastHeight, greatestHeight);
}

void PageHandlers::mermaidSVG(const QJsonValue& svg) {
  // A larger one costs more to keep than to draw again.
  if (svg.isString() && svg.toString().size() <= longestMarkup) answer_["svg"] = svg.toString();
}

void PageHandlers::mermaidPicture(const QJsonValue& picture) {
  const QString start = QStringLiteral("data:image/png;base64,");
  const QString png = picture["png"].toString();
  if (png.startsWith(start) && png.size() <= longestPicture) {
    answer_["png"] = png.mid(start.size());
    answer_["width"] = std::max(1.0, picture["width"].toDouble());
  } else {
    answer_["error"] = QStringLiteral("large");
  }
  emit finished();
}

void PageHandlers::mermaidError(const QJsonValue& message) {
  answer_["error"] = QStringLiteral("diagram");
  answer_["message"] = message.toString().left(longestMessage);
  emit finished();
}

void PageHandlers::mermaidNothing(const QJsonValue& /*message*/) {
  answer_["error"] = QStringLiteral("nothing");
  emit finished();
}

}  // namespace nomely
