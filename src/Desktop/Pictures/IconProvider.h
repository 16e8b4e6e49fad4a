#pragma once

#include <QQuickImageProvider>

namespace nomely {

// Line icons on a grid of 24, drawn in one colour and sharp at any scale:
// "image://icon/pin/a8452b/1.7" is the name, the colour and the width of the line. Main thread.
class IconProvider final : public QQuickImageProvider {
 public:
  IconProvider() : QQuickImageProvider(QQuickImageProvider::Image) {}

  QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;
};

}  // namespace nomely
