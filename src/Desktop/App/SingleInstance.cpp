#include "Desktop/App/SingleInstance.h"

#include <QCryptographicHash>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <utility>

#include "Desktop/Base/Qt.h"
#include "Platform/Error.h"

namespace nomely {
namespace {

const QString objectPath = QStringLiteral("/com/tarvik/Nomely/Window");
const QString interface = QStringLiteral("com.tarvik.Nomely.Window");
constexpr int patience = 5000;  // milliseconds

// A root that is named through a link is the same root.
QString identityOf(const std::filesystem::path& root) {
  std::error_code ignored;
  const auto real = std::filesystem::weakly_canonical(root, ignored);
  const QByteArray bytes = QByteArray::fromStdString(real.empty() ? root.string() : real.string());
  return QString::fromLatin1(
      QCryptographicHash::hash(bytes, QCryptographicHash::Sha1).toHex().left(16));
}

}  // namespace

SingleInstance::SingleInstance(const std::filesystem::path& root, std::filesystem::path stateFolder,
                               QDBusConnection bus, QObject* parent)
    : QObject(parent),
      identity_(identityOf(root)),
      stateFolder_(std::move(stateFolder)),
      bus_(std::move(bus)) {}

SingleInstance::Role SingleInstance::claim(const StartRequest& request) {
  if (bus_.isConnected()) return claimName(request);
  takeLock();
  return Role::first;
}

SingleInstance::Role SingleInstance::claimName(const StartRequest& request) {
  // No part of a name may begin with a digit.
  const QString name = QStringLiteral("%1.r%2").arg(interface, identity_);
  bus_.registerObject(
      objectPath, this,
      QDBusConnection::ExportScriptableSlots | QDBusConnection::ExportScriptableInvokables);
  // Twice: the process that had it may be gone by the time it is told.
  for (int attempt = 0; attempt < 2; ++attempt) {
    if (bus_.registerService(name)) return Role::first;
    QDBusMessage call =
        QDBusMessage::createMethodCall(name, objectPath, interface, QStringLiteral("open"));
    call.setAutoStartService(false);
    call << request.toMap();
    const QDBusMessage reply = bus_.call(call, QDBus::Block, patience);
    if (reply.type() != QDBusMessage::ErrorMessage) return Role::handedOver;
    if (bus_.interface()->isServiceRegistered(name)) break;
  }
  throw Error("desktop.busy",
              utf8(tr("Nomely 已经打开了这个数据目录，但没有回应；请等它忙完，或结束它再试")));
}

// Where nothing can be locked, two windows are better than none: the root's gate keeps notes safe.
void SingleInstance::takeLock() {
  const auto folder = stateFolder_ / ("window-" + utf8(identity_));
  std::error_code failure;
  std::filesystem::create_directories(folder, failure);
  if (failure) return;
  lock_.emplace(folder);
  if (lock_->attempt() == DirectoryLock::Attempt::busy)
    throw Error("desktop.busy", utf8(tr("Nomely 已经打开了这个数据目录，请到它的窗口里用")));
}

void SingleInstance::open(const QVariantMap& request) {
  emit requested(StartRequest::fromMap(request));
}

}  // namespace nomely
