#include "Desktop/App/WholeFrames.h"

#include <QAbstractItemModel>
#include <QColor>
#include <QEvent>
#include <QQuickItem>
#include <QQuickWindow>
#include <utility>

namespace nomely {

WholeFrames::WholeFrames(QQuickWindow& window) : QObject(&window), window_(window) {
  window.installEventFilter(this);
  connect(&window, &QQuickWindow::afterAnimating, this, &WholeFrames::begin);
}

void WholeFrames::watch(const QAbstractItemModel& model) {
  const auto changed = [this] { isWhole_ = true; };
  connect(&model, &QAbstractItemModel::rowsInserted, this, changed);
  connect(&model, &QAbstractItemModel::rowsMoved, this, changed);
  connect(&model, &QAbstractItemModel::rowsRemoved, this, changed);
  connect(&model, &QAbstractItemModel::dataChanged, this, changed);
  connect(&model, &QAbstractItemModel::modelReset, this, changed);
}

bool WholeFrames::eventFilter(QObject* watched, QEvent* event) {
  switch (event->type()) {
    case QEvent::UpdateRequest:
    case QEvent::Timer:
    case QEvent::MetaCall:
      break;
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::ShortcutOverride: {
      const QQuickItem* const focus = window_.activeFocusItem();
      if (!focus || !focus->flags().testFlag(QQuickItem::ItemAcceptsInputMethod)) isWhole_ = true;
      break;
    }
    default:
      isWhole_ = true;
  }
  return QObject::eventFilter(watched, event);
}

// Another ground, by less than can be seen, lies under everything.
void WholeFrames::begin() {
  if (!std::exchange(isWhole_, false)) return;
  QColor ground = window_.color();
  ground.setBlue(ground.blue() ^ 1);
  window_.setColor(ground);
}

}  // namespace nomely
