#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QVariantMap>
#include <filesystem>
#include <optional>

#include "Desktop/App/StartRequest.h"
#include "Platform/Files/DirectoryLock.h"

namespace nomely {

// One window a data root: whoever starts it once more hands over what was asked for. The first owns
// a name on the session bus that follows from the root's real path; without a bus it holds a lock.
// Both go with its process, however that ends. Main thread.
class SingleInstance : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "com.tarvik.Nomely.Window")

 public:
  enum class Role { first, handedOver };

  // `stateFolder` is where the lock lies.
  SingleInstance(const std::filesystem::path& root, std::filesystem::path stateFolder,
                 QDBusConnection bus = QDBusConnection::sessionBus(), QObject* parent = nullptr);

  // Claims the root, or hands `request` to the process that has it. Blocks for 5 seconds at most.
  // Throws Error, for the user, when another process has the root and can't be told.
  [[nodiscard]] Role claim(const StartRequest& request);

  // Called over the bus.
  Q_SCRIPTABLE void open(const QVariantMap& request);

 signals:
  // Another start wants this; the window is to come to the front.
  void requested(const nomely::StartRequest& request);

 private:
  [[nodiscard]] Role claimName(const StartRequest& request);
  void takeLock();

  QString identity_;  // of the root
  std::filesystem::path stateFolder_;
  QDBusConnection bus_;
  std::optional<DirectoryLock> lock_;
};

}  // namespace nomely
