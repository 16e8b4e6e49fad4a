#include "Desktop/Text/Composing.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QInputMethod>
#include <QInputMethodEvent>
#include <QQuickItem>

namespace nomely {
namespace {

void send(QQuickItem& area, const QString& composed, const QString& committed = {}) {
  QInputMethodEvent event(composed, {});
  event.setCommitString(committed);
  QCoreApplication::sendEvent(&area, &event);
}

QString composedIn(const QQuickItem& area) {
  return area.property("preeditText").toString();
}

}  // namespace

bool isComposing(const QQuickItem& area) {
  return area.property("inputMethodComposing").toBool();
}

void commitComposing(QQuickItem& area) {
  if (!isComposing(area)) return;
  const QString composed = composedIn(area);
  const auto length = [&] { return area.property("length").toInt(); };  // without what is composed
  const int before = length();
  if (area.hasActiveFocus()) {
    // It may know better what that stands for. Without a reset it would go on with it, too.
    QGuiApplication::inputMethod()->commit();
    QGuiApplication::inputMethod()->reset();
  }
  if (length() == before) send(area, {}, composed);
}

QString liftComposing(QQuickItem& area) {
  if (!isComposing(area)) return {};
  QString composed = composedIn(area);
  send(area, {});
  return composed;
}

void resumeComposing(QQuickItem& area, const QString& composed) {
  if (!composed.isEmpty()) send(area, composed);
}

}  // namespace nomely
