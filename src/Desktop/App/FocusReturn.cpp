#include "Desktop/App/FocusReturn.h"

#include <QQuickWindow>

namespace nomely {
namespace {

bool liesInPopup(const QQuickItem* item) {
  while (item != nullptr && !item->inherits("QQuickOverlay")) item = item->parentItem();
  return item != nullptr;
}

}  // namespace

FocusReturn::FocusReturn(QQuickWindow& window) : QObject(&window), window_(window) {
  connect(&window, &QQuickWindow::activeFocusItemChanged, this, &FocusReturn::note);
}

bool FocusReturn::isWithNobody() const {
  const QQuickItem* const item = window_.activeFocusItem();
  return item == nullptr || item == window_.contentItem();
}

void FocusReturn::note() {
  if (!isWithNobody()) {
    if (!liesInPopup(window_.activeFocusItem())) last_ = window_.activeFocusItem();
  } else if (window_.isActive()) {
    // Who closed it may be about to place the keyboard.
    QMetaObject::invokeMethod(this, &FocusReturn::giveBack, Qt::QueuedConnection);
  }
}

void FocusReturn::giveBack() {
  if (last_ && isWithNobody() && last_->isVisible() && last_->isEnabled())
    last_->forceActiveFocus(Qt::PopupFocusReason);
}

}  // namespace nomely
