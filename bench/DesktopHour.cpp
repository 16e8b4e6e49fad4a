#include <QCoreApplication>
#include <QMouseEvent>
#include <QWheelEvent>
#include <algorithm>

#include <fmt/format.h>

#include "Desktop/Base/Qt.h"
#include "Editor/Timeline/DayViewModel.h"
#include "bench/DesktopBench.h"

namespace nomely::bench {
namespace {

namespace fs = std::filesystem;

constexpr int allEvents = 100'000;
// By then whatever is kept once for all is there.
constexpr int warmUp = 10'000;

// Events as they come from a keyboard and a mouse, each seen on a frame before the next.
class Hands {
 public:
  explicit Hands(BenchWindow& window) : window_(window) {}

  [[nodiscard]] int events() const { return events_; }

  void key(int key, Qt::KeyboardModifiers modifiers = {}, int times = 1) {
    for (int i = 0; i < times; ++i) {
      window_.key(key, modifiers);
      seen();
    }
  }
  void type(const QString& text) {
    for (const QChar character : text) {
      window_.key(character == u'\n' ? Qt::Key_Return : Qt::Key_unknown, {}, QString(character));
      seen();
    }
  }
  void click(const char* name) {
    QQuickItem* item = window_.item(name);
    if (item == nullptr) return;
    const QPointF at = item->mapToScene({item->width() / 2, item->height() / 2});
    for (const auto type :
         {QEvent::MouseMove, QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
      const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
      const Qt::MouseButtons held =
          type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton;
      QMouseEvent event(type, at, window_.desktop->window()->mapToGlobal(at), button, held, {});
      QCoreApplication::sendEvent(window_.desktop->window(), &event);
      seen();
    }
  }
  void turnWheel(int notches) {
    constexpr int notch = 120;
    QQuickWindow* shown = window_.desktop->window();
    const QPointF at(shown->width() * 0.6, shown->height() * 0.6);
    for (int i = 0; i < std::abs(notches); ++i) {
      QWheelEvent event(at, shown->mapToGlobal(at), {}, {0, notches < 0 ? notch : -notch},
                        Qt::NoButton, {}, Qt::NoScrollPhase, false);
      QCoreApplication::sendEvent(shown, &event);
      seen();
    }
  }
  // Until what was asked for has come, as one waits for it.
  void wait() {
    window_.untilWritten();
    window_.untilLoaded();
    window_.frame();
  }

 private:
  void seen() {
    ++events_;
    window_.frame();
    BenchWindow::processEvents(2);
  }

  BenchWindow& window_;
  int events_ = 0;
};

// Writes a note, reads on, mends it, looks for others, visits the other pages, and throws it away.
void useOnce(Hands& hands, BenchWindow& window, int round) {
  const QString number = QString::number(round);
  hands.key(Qt::Key_N, Qt::ControlModifier);
  hands.type(QString::fromUtf8("今天第 %1 次出门，**路上**想到的事。 #散步/西湖 \n- [ ] 买菜")
                 .arg(number));
  hands.key(Qt::Key_Return, Qt::ControlModifier);
  hands.wait();
  hands.key(Qt::Key_F6);
  hands.key(Qt::Key_J, {}, 4);
  hands.key(Qt::Key_Space);
  hands.key(Qt::Key_P, {}, 2);
  hands.wait();
  hands.turnWheel(60);
  hands.turnWheel(-70);
  hands.key(Qt::Key_Home);
  hands.key(Qt::Key_Return);
  hands.type(QString::fromUtf8("又补一句。"));
  hands.key(Qt::Key_Backspace, {}, 3);
  hands.key(Qt::Key_S, Qt::ControlModifier);
  hands.wait();
  hands.key(Qt::Key_Escape);
  hands.wait();
  hands.key(Qt::Key_F, Qt::ControlModifier);
  hands.type(round % 2 ? QString::fromUtf8("咖啡") : QString::fromUtf8("第 ") + number);
  hands.key(Qt::Key_Down, {}, 3);
  hands.key(Qt::Key_Return);
  hands.wait();
  hands.key(Qt::Key_Escape, {}, 2);
  for (const int list : {Qt::Key_2, Qt::Key_3, Qt::Key_4, Qt::Key_1}) {
    hands.key(list, Qt::ControlModifier);
    hands.wait();
  }
  for (const char* page : {"pageOverview", "pageTrash", "pageSettings"}) {
    hands.click(page);
    hands.key(Qt::Key_Tab, {}, 5);
    hands.key(Qt::Key_Escape);
  }
  hands.key(Qt::Key_Comma, Qt::ControlModifier);
  hands.key(Qt::Key_Escape);
  window.screens().timeline()->showAll();
  hands.wait();
  hands.key(Qt::Key_F6, {}, 2);
  TimelineScreen& timeline = *window.screens().timeline();
  for (int row = 0; row < timeline.model()->rowCount(); ++row)
    if (timeline.model()->at(row).body().contains(u' ' + number + u' ')) {
      timeline.remove(timeline.model()->at(row));
      break;
    }
  hands.wait();
}

}  // namespace

void measureHour(const fs::path& root) {
  const fs::path copy = root.parent_path() / "hour";
  fs::remove_all(copy);
  fs::copy(root, copy, fs::copy_options::recursive);
  {
    BenchWindow window(copy);
    window.untilLoaded();
    Hands hands(window);
    double before = 0;
    for (int round = 0; hands.events() < allEvents; ++round) {
      useOnce(hands, window, round);
      if (before == 0 && hands.events() >= warmUp) before = residentMegabytes();
    }
    const double after = residentMegabytes();
    row("memory after 10,000 and after 100,000 events of use",
        fmt::format("{:.0f} / {:.0f} MB ({:+.1f} %)", before, after, (after / before - 1) * 100),
        "10 %");
  }
  fs::remove_all(copy);
}

}  // namespace nomely::bench
