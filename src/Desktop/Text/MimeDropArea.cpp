#include "Desktop/Text/MimeDropArea.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>

namespace nomely {

MimeDropArea::MimeDropArea(QQuickItem* parent) : QQuickItem(parent) {
  setFlag(ItemAcceptsDrops);
}

void MimeDropArea::setContainsDrag(bool contains) {
  if (contains == containsDrag_) return;
  containsDrag_ = contains;
  emit containsDragChanged();
}

void MimeDropArea::dragEnterEvent(QDragEnterEvent* event) {
  const QMimeData& mime = *event->mimeData();
  const bool isWelcome = mime.hasUrls() || mime.hasImage() || mime.hasText() || mime.hasHtml();
  event->setDropAction(Qt::CopyAction);
  event->setAccepted(isWelcome);
  setContainsDrag(isWelcome);
}

void MimeDropArea::dragLeaveEvent(QDragLeaveEvent* /*event*/) {
  setContainsDrag(false);
}

void MimeDropArea::dropEvent(QDropEvent* event) {
  setContainsDrag(false);
  if (editor_ == nullptr) return;
  event->setDropAction(Qt::CopyAction);
  event->accept();
  editor_->take(*event->mimeData());
}

}  // namespace nomely
