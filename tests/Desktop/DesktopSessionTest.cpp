#include <QCommandLineParser>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QDir>
#include <QGuiApplication>
#include <QMap>
#include <QPalette>
#include <QTest>
#include <QVariantMap>
#include <array>
#include <optional>
#include <thread>

#include <gmock/gmock.h>

#include "Desktop/App/SingleInstance.h"
#include "Desktop/App/ThemeWatcher.h"
#include "Desktop/Support/PrivateBus.h"
#include "Platform/Error.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {

namespace {

// The desktop's settings portal: dark, and without motion.
class FakePortal : public QDBusVirtualObject {
 public:
  explicit FakePortal(QDBusConnection bus) : bus_(std::move(bus)) {
    qDBusRegisterMetaType<QMap<QString, QVariantMap>>();
    bus_.registerVirtualObject(path, this);
    bus_.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
  }

  [[nodiscard]] QString introspect(const QString& /*path*/) const override { return {}; }
  bool handleMessage(const QDBusMessage& call, const QDBusConnection& bus) override {
    const QMap<QString, QVariantMap> settings{
        {QStringLiteral("org.freedesktop.appearance"), {{QStringLiteral("color-scheme"), 1U}}},
        {QStringLiteral("org.gnome.desktop.interface"),
         {{QStringLiteral("enable-animations"), false}}}};
    return call.member() == QLatin1String("ReadAll") &&
           bus.send(call.createReply(QVariant::fromValue(settings)));
  }
  void change(const char* group, const char* key, const QVariant& value) {
    auto signal = QDBusMessage::createSignal(
        path, QStringLiteral("org.freedesktop.portal.Settings"), QStringLiteral("SettingChanged"));
    signal << QString::fromUtf8(group) << QString::fromUtf8(key)
           << QVariant::fromValue(QDBusVariant(value));
    bus_.send(signal);
  }

 private:
  static inline const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
  QDBusConnection bus_;
};

TEST(ThemeWatcherTest, FollowsThePortalAndElseThePalette) {
  PrivateBus bus;
  FakePortal portal(bus.connection());
  const ThemeWatcher watcher(bus.connection());
  ASSERT_TRUE(QTest::qWaitFor([&] { return watcher.isDark() && !watcher.isAnimated(); }));
  const struct {
    const char* group;
    const char* key;
    QVariant value;
    std::array<bool, 3> expected;  // dark, animated, of high contrast
  } rows[] = {
      {"org.freedesktop.appearance", "color-scheme", 2U, {false, false, false}},
      {"org.gnome.desktop.interface", "enable-animations", true, {false, true, false}},
      {"org.kde.kdeglobals.KDE", "AnimationDurationFactor", "0", {false, false, false}},
      {"org.kde.kdeglobals.KDE", "AnimationDurationFactor", "0.5", {false, true, false}},
      {"org.freedesktop.appearance", "contrast", 1U, {false, true, true}},
      {"org.freedesktop.appearance", "color-scheme", 1U, {true, true, true}},
      {"org.freedesktop.appearance", "color-scheme", 0U, {false, true, true}},
  };
  for (const auto& row : rows) {
    portal.change(row.group, row.key, row.value);
    EXPECT_TRUE(QTest::qWaitFor([&] {
      return std::array{watcher.isDark(), watcher.isAnimated(), watcher.isHighContrast()} ==
             row.expected;
    })) << row.key
        << row.value.toString().toStdString();
  }
  const QPalette usual = QGuiApplication::palette();
  QGuiApplication::setPalette(QPalette(Qt::black));
  EXPECT_TRUE(QTest::qWaitFor([&] { return watcher.isDark(); }));
  QGuiApplication::setPalette(usual);
}

StartRequest requestOf(const QStringList& words) {
  QCommandLineParser parser;
  StartRequest::addOptions(parser);
  parser.parse(QStringList{QStringLiteral("nomely-desktop")} + words);
  return StartRequest::of(parser);
}

TEST(SingleInstanceTest, ASecondStartHandsOverAndADeadOwnerIsReplaced) {
  TemporaryFolder folder;
  fs::create_directories(folder.path() / "root");
  fs::create_directory_symlink(folder.path() / "root", folder.path() / "link");
  const auto instance = [&](const char* root, QDBusConnection bus) {
    return SingleInstance(folder.path() / root, folder.path() / "state", std::move(bus));
  };
  PrivateBus bus;
  const StartRequest request =
      requestOf({QStringLiteral("--capture"), QStringLiteral("--day"), QStringLiteral("2026-03-01"),
                 QStringLiteral("a.png"), QStringLiteral("file:///tmp/%E7%BA%AA.pdf")});
  EXPECT_EQ(request.files, (QStringList{QDir::current().absoluteFilePath(QStringLiteral("a.png")),
                                        QStringLiteral("/tmp/纪.pdf")}));
  EXPECT_THROW(requestOf({QStringLiteral("--day"), QStringLiteral("2026-13-01")}), Error);

  std::optional<QDBusConnection> ownBus = bus.connection();
  std::optional<StartRequest> came;
  {
    auto first = instance("root", *ownBus);
    QObject::connect(&first, &SingleInstance::requested,
                     [&](const StartRequest& it) { came = it; });
    EXPECT_EQ(first.claim({}), SingleInstance::Role::first);
    EXPECT_EQ(instance("other", bus.connection()).claim({}), SingleInstance::Role::first);
    // The second is another process, here another thread.
    std::optional<SingleInstance::Role> role;
    std::jthread second(
        [&, other = bus.connection()] { role = instance("link", other).claim(request); });
    EXPECT_TRUE(QTest::qWaitFor([&] { return came.has_value(); }));
    second.join();
    EXPECT_EQ(role, SingleInstance::Role::handedOver);
    EXPECT_EQ(came, request);
  }
  bus.end(ownBus->name());
  ownBus.reset();
  EXPECT_EQ(instance("root", bus.connection()).claim({}), SingleInstance::Role::first);

  const QDBusConnection none(QStringLiteral("no bus"));
  {
    auto locked = instance("root", none);
    EXPECT_EQ(locked.claim({}), SingleInstance::Role::first);
    EXPECT_THROW((void)instance("link", none).claim({}), Error);
  }
  EXPECT_EQ(instance("root", none).claim({}), SingleInstance::Role::first);
}

}  // namespace
}  // namespace nomely::test
