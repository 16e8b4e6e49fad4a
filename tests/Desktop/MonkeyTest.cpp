#include <QDesktopServices>
#include <QGuiApplication>
#include <QTest>
#include <QWheelEvent>
#include <cstdlib>
#include <random>
#include <vector>

#include "Core/Query/TimelineQueryStore.h"
#include "Desktop/Support/DesktopTest.h"
#include "Editor/Timeline/DayViewModel.h"

namespace nomely::test {
namespace {

// Takes what would leave the program, such as a link.
class Nowhere : public QObject {
  Q_OBJECT
 public:
  Nowhere() {
    for (const char* scheme : schemes)
      QDesktopServices::setUrlHandler(QString::fromUtf8(scheme), this, "open");
  }
  ~Nowhere() override {
    for (const char* scheme : schemes) QDesktopServices::unsetUrlHandler(QString::fromUtf8(scheme));
  }
 public slots:
  void open(const QUrl& url) { opened = url; }

 public:
  QUrl opened;

 private:
  static constexpr const char* schemes[]{"http", "https", "mailto", "file"};
};

// Hands that know nothing of the program: what they do must neither end it nor make its lists
// differ from the disk. NOMELY_MONKEY is the number of events.
class MonkeyTest : public DesktopTest {
 protected:
  [[nodiscard]] int below(int bound) {
    return static_cast<int>(random_() % static_cast<unsigned>(bound));
  }
  [[nodiscard]] QPoint somewhere() {
    return {below(desktop->window()->width()), below(desktop->window()->height())};
  }

  void act() {
    QQuickWindow* window = desktop->window();
    switch (below(16)) {
      case 0:
      case 1:
      case 2:
      case 3:
      case 4:
        QTest::mouseMove(window, somewhere());
        return QTest::mouseClick(window, below(8) == 0 ? Qt::RightButton : Qt::LeftButton, {},
                                 somewhere());
      case 5: {
        const QPoint from = somewhere();
        QTest::mousePress(window, Qt::LeftButton, {}, from);
        QTest::mouseMove(window, somewhere());
        return QTest::mouseRelease(window, Qt::LeftButton, {}, somewhere());
      }
      case 6:
      case 7:
        return press(texts[static_cast<std::size_t>(below(std::size(texts)))]);
      case 8:
        return external();
      case 9: {
        QWheelEvent wheel(somewhere(), window->mapToGlobal(somewhere()), {},
                          {0, below(2) ? 240 : -240}, Qt::NoButton, {}, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(window, &wheel);
        return;
      }
      case 10:
        return window->resize(420 + below(900), 480 + below(500));
      case 11:
        return clock.advance(std::chrono::minutes(below(600)));
      default:
        return QTest::keySequence(
            window, QKeySequence::fromString(
                        QString::fromUtf8(keys[static_cast<std::size_t>(below(std::size(keys)))])));
    }
  }

  void press(const char* text) {
    for (const QChar character : QString::fromUtf8(text))
      QTest::sendKeyEvent(QTest::Click, desktop->window(), Qt::Key_unknown, QString(character), {});
  }

  // Another program, which may also leave nonsense.
  void external() {
    const std::string date = "2026-02-2" + std::to_string(below(9));
    put(date, 900 + below(20), texts[static_cast<std::size_t>(below(std::size(texts)))],
        below(6) ? "time: \"12:00\"" : "time: [");
    screens().timeline()->refresh();
  }

  void closeOtherWindows() const {
    for (QWindow* window : QGuiApplication::topLevelWindows())
      if (window != desktop->window()) window->close();
  }

  // What stands in the list of all notes, and what the files say.
  void expectListsAsOnDisk() {
    const auto texted = [](const std::vector<MemoEntry>& entries) {
      std::vector<std::string> all;
      for (const MemoEntry& entry : entries)
        all.push_back(memoKey(entry.date, entry.memo->seqNumber) + entry.memo->body);
      return all;
    };
    screens().timeline()->showAll();
    DayViewModel& timeline = desktop->application().dayViewModel();
    const TimelineQueryStore onDisk(desktop->application().dayStore());
    EXPECT_TRUE(eventually([&] {
      screens().timeline()->refresh();
      return !timeline.isLoadingTimeline.get() &&
             texted(timeline.allMemos.get()) == texted(onDisk.visibleEntries());
    }));
  }

 private:
  static constexpr const char* texts[]{"早上好 #散步 ",
                                       "- [ ] 买菜\n",
                                       "**粗** `码` ",
                                       "| a | b |\n",
                                       "https://example.org/x ",
                                       "#",
                                       "😀é",
                                       "```\n"};
  static constexpr const char* keys[]{
      "Ctrl+Return", "Esc",    "Tab",    "Shift+Tab", "Return", "Down",   "Up",     "J",
      "K",           "P",      "Delete", "Space",     "Ctrl+N", "Ctrl+F", "Ctrl+P", "Ctrl+1",
      "Ctrl+2",      "Ctrl+3", "Ctrl+4", "Alt+Left",  "F6",     "F1",     "Ctrl+Z", "Ctrl+E",
      "Ctrl+S",      "Ctrl+B", "Ctrl+,", "Backspace", "Ctrl+A", "Ctrl+C", "Ctrl+V", "Ctrl+X",
      "Menu",        "Home",   "End",    "PgDown"};

  std::mt19937 random_{20260301};
};

TEST_F(MonkeyTest, RandomEventsLeaveTheListsAsTheDiskIs) {
  const Nowhere nowhere;
  for (int number = 1; number <= 30; ++number)
    put("2026-02-2" + std::to_string(number % 9), number,
        "## 第 " + std::to_string(number) +
            " 条\n\n- [ ] 一\n- [x] 二\n\n> [!TIP]\n> 记\n\n#散步/西湖");
  open();
  const char* asked = std::getenv("NOMELY_MONKEY");
  const int events = asked ? std::atoi(asked) : 1500;
  for (int event = 1; event <= events; ++event) {
    act();
    if (event % 8 == 0) settle();
    closeOtherWindows();
    if (event % 500 == 0) expectListsAsOnDisk();
    if (HasFailure()) FAIL() << "after event " << event;
  }
}

}  // namespace
}  // namespace nomely::test

#include "MonkeyTest.moc"
