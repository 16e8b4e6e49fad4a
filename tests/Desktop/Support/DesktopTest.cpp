#include "Desktop/Support/DesktopTest.h"

#include <QGuiApplication>
#include <QKeySequence>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <vector>

#include <fmt/format.h>

#include "Editor/Timeline/DayViewModel.h"
#include "Platform/Network/HttpClient.h"
#include "Platform/Network/WebSocketClient.h"

namespace nomely::test {
namespace {

constexpr std::chrono::seconds deadline{20};

void collect(QQuickItem* from, const QString& name, std::vector<QQuickItem*>& found) {
  if (!from->isVisible()) return;
  if (from->objectName() == name) found.push_back(from);
  for (QQuickItem* child : from->childItems()) collect(child, name, found);
}

}  // namespace

DesktopTest::DesktopTest()
    : http(makeHttpClient()), webSockets(makeWebSocketClient()), timers(makeSystemTimers()) {}

DesktopTest::~DesktopTest() {
  desktop.reset();
}

void DesktopTest::open() {
  const Environment environment({{"HOME", folder.path().string()},
                                 {"TMPDIR", folder.path().string()},
                                 {"XDG_STATE_HOME", state.string()}});
  desktop = std::make_unique<DesktopApplication>(
      DesktopMachine{environment, clock, *fileSystem, secrets, *http, *webSockets, *timers}, root);
  desktop->start();
  desktop->window()->resize(size);
  ASSERT_TRUE(QTest::qWaitForWindowExposed(desktop->window()));
  desktop->window()->requestActivate();
  if (!desktop->screens()) return;
  // A note that maintenance upgrades at this moment could not be changed.
  ASSERT_TRUE(eventually([&] {
    return desktop->application().startup().state() == StartupCoordinator::State::completed &&
           !desktop->application().dayViewModel().isLoadingTimeline.get();
  }));
  settle();
}

void DesktopTest::close() {
  QTimer::singleShot(0, desktop->window(), [this] { desktop->window()->close(); });
  QTimer late;
  QObject::connect(&late, &QTimer::timeout, [] { QCoreApplication::exit(1); });
  late.start(deadline);
  ASSERT_EQ(QGuiApplication::exec(), 0) << "the program does not end";
  desktop.reset();
}

void DesktopTest::put(const std::string& day, int number, const std::string& body,
                      const std::string& header) {
  writeFile(root / day / fmt::format("{:03}.md", number),
            fmt::format("---\n{}\n---\n\n{}\n", header, body));
}

QQuickItem* DesktopTest::item(const char* objectName, int nth) const {
  std::vector<QQuickItem*> found;
  collect(desktop->window()->contentItem(), QString::fromUtf8(objectName), found);
  std::ranges::stable_sort(found, {}, [](QQuickItem* each) { return each->mapToScene({}).y(); });
  const auto index = static_cast<std::size_t>(nth);
  return index < found.size() ? found[index] : nullptr;
}

QQuickItem* DesktopTest::need(const char* objectName, int nth) const {
  if (!eventually([&] { return item(objectName, nth) != nullptr; }))
    ADD_FAILURE() << "no " << objectName;
  return item(objectName, nth);
}

void DesktopTest::click(const char* objectName, Qt::MouseButton button) {
  if (QQuickItem* found = need(objectName)) click(found, button);
}

void DesktopTest::click(QQuickItem* item, Qt::MouseButton button) {
  settle();  // it may be on its way to its place
  clickAt(item->mapToScene({item->width() / 2, item->height() / 2}).toPoint(), button);
}

void DesktopTest::clickAt(QPoint point, Qt::MouseButton button) {
  QTest::mouseMove(desktop->window(), point);
  QTest::mouseClick(desktop->window(), button, {}, point);
  settle();
}

void DesktopTest::key(const char* keys) {
  for (const QString& each : QString::fromUtf8(keys).split(QStringLiteral(", "))) {
    settle();
    QTest::keySequence(desktop->window(), QKeySequence::fromString(each));
    settle();
  }
}

void DesktopTest::type(const QString& text) {
  for (const QChar character : text) {
    if (character == QLatin1Char('\n'))
      QTest::keyClick(desktop->window(), Qt::Key_Return);
    else
      QTest::sendKeyEvent(QTest::Click, desktop->window(), Qt::Key_unknown, QString(character), {});
  }
  settle();
}

QString DesktopTest::textOf(const char* objectName, int nth) const {
  const QQuickItem* found = need(objectName, nth);
  return found ? found->property("text").toString() : QString();
}

bool DesktopTest::eventually(const std::function<bool()>& condition) {
  return QTest::qWaitFor(
      condition,
      static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(deadline).count()));
}

void DesktopTest::settle() const {
  // Each pass may post more: a change, its bindings, and their layout, which comes with the frame.
  for (int pass = 0; pass < 5; ++pass) {
    QCoreApplication::processEvents();
    QEvent frame(QEvent::UpdateRequest);
    QCoreApplication::sendEvent(desktop->window(), &frame);
  }
}

QImage DesktopTest::grab(const char* name) const {
  settle();
  QImage image = desktop->window()->grabWindow();
  if (const QByteArray pictures = qgetenv("NOMELY_PICTURES"); !pictures.isEmpty()) {
    const QString file = QString::fromUtf8(pictures) + QLatin1Char('/') + QString::fromUtf8(name);
    EXPECT_TRUE(image.save(file));
  }
  return image;
}

}  // namespace nomely::test
