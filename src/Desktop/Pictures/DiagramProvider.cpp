#include "Desktop/Pictures/DiagramProvider.h"

namespace nomely {

QImage DiagramProvider::requestImage(const QString& id, QSize* size, const QSize& requestedSize) {
  QImage image = client_.image(id);
  if (size) *size = image.size();
  const QSize fitting = image.size().scaled(requestedSize, Qt::KeepAspectRatio);
  // Larger it would only be blurred.
  if (requestedSize.isEmpty() || fitting.width() >= image.width()) return image;
  return image.scaled(fitting, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

}  // namespace nomely
