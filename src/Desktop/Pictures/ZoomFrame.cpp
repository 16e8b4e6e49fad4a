#include "Desktop/Pictures/ZoomFrame.h"

#include <algorithm>
#include <utility>

namespace nomely {
namespace {

// Where a side of that length begins that would like to begin at `wanted`.
double beginOf(double wanted, double length, double room) {
  return length <= room ? (room - length) / 2 : std::clamp(wanted, room - length, 0.0);
}

}  // namespace

void ZoomFrame::setView(const QSizeF& view) {
  if (std::exchange(view_, view) == view) return;
  fit();
}

void ZoomFrame::setPicture(const QSizeF& picture) {
  if (std::exchange(picture_, picture) == picture) return;
  fit();
}

void ZoomFrame::zoomBy(double factor, const QPointF& place) {
  const double zoom = std::clamp(zoom_ * factor, 1.0, largest);
  const double grown = zoom / std::exchange(zoom_, zoom);
  const QPointF corner = place + (frame_.topLeft() - place) * grown;
  this->place({corner, picture_ * zoom});
}

void ZoomFrame::zoomBy(double factor) {
  zoomBy(factor, {view_.width() / 2, view_.height() / 2});
}

void ZoomFrame::moveBy(double right, double down) {
  place(frame_.translated(right, down));
}

void ZoomFrame::fit() {
  zoom_ = 1;
  place({QPointF(), picture_});
}

void ZoomFrame::place(QRectF frame) {
  frame.moveTo(beginOf(frame.x(), frame.width(), view_.width()),
               beginOf(frame.y(), frame.height(), view_.height()));
  frame_ = frame;
  emit frameChanged();
}

}  // namespace nomely
