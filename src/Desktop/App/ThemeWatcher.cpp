#include "Desktop/App/ThemeWatcher.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QEvent>
#include <QGuiApplication>
#include <QMap>
#include <QPalette>
#include <QStringList>
#include <QVariantMap>

namespace nomely {
namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");

const QString appearance = QStringLiteral("org.freedesktop.appearance");
const QString gnome = QStringLiteral("org.gnome.desktop.interface");
const QString gnomeAccess = QStringLiteral("org.gnome.desktop.a11y.interface");
const QString kde = QStringLiteral("org.kde.kdeglobals.KDE");

bool paletteIsDark() {
  return QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
}

}  // namespace

ThemeWatcher::ThemeWatcher(QDBusConnection bus, QObject* parent)
    : QObject(parent), bus_(std::move(bus)), isPaletteDark_(paletteIsDark()) {
  qApp->installEventFilter(this);
  if (bus_.isConnected()) ask();
}

bool ThemeWatcher::isDark() const {
  return isDarkChosen_.value_or(isPaletteDark_);
}

bool ThemeWatcher::eventFilter(QObject* watched, QEvent* event) {
  if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange) {
    isPaletteDark_ = paletteIsDark();
    emit changed();
  }
  return false;
}

void ThemeWatcher::ask() {
  QDBusMessage call =
      QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("ReadAll"));
  call << QStringList{appearance, gnome, gnomeAccess, kde};
  auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
    watcher->deleteLater();
    const QDBusPendingReply<> reply = *watcher;
    // Before a first answer the bus refuses the subscription.
    if (!std::exchange(isSubscribed_, true))
      bus_.connect(service, path, interface, QStringLiteral("SettingChanged"), this,
                   SLOT(take(QString, QString, QDBusVariant)));
    if (reply.isError()) return;
    const auto groups = qdbus_cast<QMap<QString, QVariantMap>>(reply.reply().arguments().value(0));
    for (auto group = groups.begin(); group != groups.end(); ++group)
      for (auto setting = group->begin(); setting != group->end(); ++setting)
        take(group.key(), setting.key(), QDBusVariant(setting.value()));
  });
}

void ThemeWatcher::take(const QString& group, const QString& key, const QDBusVariant& value) {
  const QVariant given = value.variant();
  if (group == appearance && key == QLatin1String("color-scheme")) {
    // 1 is dark, 2 is light, 0 leaves it to us.
    const uint scheme = given.toUInt();
    isDarkChosen_ = scheme == 0 ? std::nullopt : std::optional(scheme == 1);
  } else if (group == appearance && key == QLatin1String("contrast")) {
    isContrastChosen_ = given.toUInt() == 1;
  } else if (group == gnomeAccess && key == QLatin1String("high-contrast")) {
    isHighContrast_ = given.toBool();
  } else if (group == gnome && key == QLatin1String("enable-animations")) {
    isAnimated_ = given.toBool();
  } else if (group == kde && key == QLatin1String("AnimationDurationFactor")) {
    hasAnimationSpeed_ = given.toString().toDouble() > 0;
  } else {
    return;
  }
  emit changed();
}

}  // namespace nomely
