#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QString>

namespace nomely::test {

// A session bus of the test's own, with as many connections as it has programs.
class PrivateBus {
 public:
  PrivateBus() {
    daemon_.start(QStringLiteral("dbus-daemon"),
                  {QStringLiteral("--session"), QStringLiteral("--nofork"),
                   QStringLiteral("--print-address")});
    if (daemon_.waitForStarted() && daemon_.waitForReadyRead())
      address_ = QString::fromUtf8(daemon_.readLine()).trimmed();
  }
  ~PrivateBus() {
    for (const QString& name : names_) QDBusConnection::disconnectFromBus(name);
    daemon_.kill();
    daemon_.waitForFinished();
  }

  [[nodiscard]] QDBusConnection connection() {
    names_ << QStringLiteral("test%1").arg(++count_);
    return QDBusConnection::connectToBus(address_, names_.last());
  }
  // Ends a connection once its last holder lets go of it, as the end of a program does.
  void end(const QString& connection) {
    names_.removeAll(connection);
    QDBusConnection::disconnectFromBus(connection);
  }

 private:
  static inline int count_ = 0;
  QProcess daemon_;
  QString address_;
  QStringList names_;
};

}  // namespace nomely::test
