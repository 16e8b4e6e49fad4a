#include "Desktop/Pictures/DiagramProvider.h"

namespace nomely {

QImage DiagramProvider::requestImage(const QString& id, QSize* size, const QSize& requestedSize) {
  QImage image = client_.image(id);
  if (size) *size = image.size();
  if (image.isNull() || requestedSize.isEmpty()) return image;
  return image.scaled(requestedSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

}  // namespace nomely
