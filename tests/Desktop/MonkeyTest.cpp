#include <QClipboard>
#include <QDesktopServices>
#include <QDropEvent>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QMimeData>
#include <QPalette>
#include <QTest>
#include <QWheelEvent>
#include <cstdlib>
#include <random>
#include <vector>

#include <fmt/format.h>

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

// What Qt Quick says of a binding or a handler that failed is a fault of ours.
QStringList& complaints() {
  static QStringList all;  // each once
  return all;
}
void listen(QtMsgType type, const QMessageLogContext& context, const QString& text) {
  if (text.contains(u"Error: "_qs) && !complaints().contains(text)) complaints().append(text);
  qt_message_output(type, context, text);
}

// Hands that know nothing of the program: what they do must neither end it nor make its lists
// differ from the disk. NOMELY_MONKEY is the number of events.
class MonkeyTest : public DesktopTest {
 protected:
  [[nodiscard]] int below(int bound) {
    return static_cast<int>(random_() % static_cast<unsigned>(bound));
  }
  template <std::size_t Count>
  [[nodiscard]] QString oneOf(const char* const (&all)[Count]) {
    return QString::fromUtf8(all[below(static_cast<int>(Count))]);
  }
  [[nodiscard]] QPoint somewhere() {
    return {below(desktop->window()->width()), below(desktop->window()->height())};
  }

  void act() {
    QQuickWindow* window = desktop->window();
    switch (below(24)) {
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
        return press(oneOf(texts));
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
      case 12:
        return paste();
      case 13:
        return drop(somewhere());
      case 14:
        return compose();
      case 15:
        return changeTheme();
      case 16:
      case 17:
        return elsewhere();
      default:
        return QTest::keySequence(window, QKeySequence::fromString(oneOf(keys)));
    }
  }

  void press(const QString& text) {
    for (const QChar character : text)
      QTest::sendKeyEvent(QTest::Click, desktop->window(), Qt::Key_unknown, QString(character), {});
  }

  // Another program, which may also leave nonsense, change what the window made, or take it away.
  void external() {
    const std::string date = "2026-02-2" + std::to_string(below(9));
    const int number = below(3) ? 900 + below(20) : 1 + below(30);
    const fs::path file = root / date / fmt::format("{:03}.md", number);
    if (below(8) == 0)
      fs::remove(file);
    else if (below(8) == 0 && fs::exists(file))
      fs::rename(file, root / date / fmt::format("{:03}.md", 940 + below(20)));
    else
      put(date, number, utf8(oneOf(texts)), below(6) ? "time: \"12:00\"" : "time: [");
    screens().timeline()->refresh();
  }

  // Something that a clipboard or a drag holds.
  [[nodiscard]] std::unique_ptr<QMimeData> something() {
    auto mime = std::make_unique<QMimeData>();
    const fs::path file = folder.path() / (below(2) ? "纪要.pdf" : "none.png");
    switch (below(5)) {
      case 0:
        mime->setImageData(QImage(8, 8, QImage::Format_RGB32));
        break;
      case 1:
        mime->setHtml(u"<p>a <b>b</b><img src='x'></p><table><tr><td>c</table>"_qs);
        break;
      case 2:
        mime->setUrls({QUrl::fromLocalFile(qt(file.string()))});
        break;
      default:
        mime->setText(oneOf(texts));
    }
    return mime;
  }
  void paste() {
    QGuiApplication::clipboard()->setMimeData(something().release());
    QTest::keySequence(desktop->window(), QKeySequence(oneOf({"Ctrl+V", "Ctrl+Shift+V"})));
  }
  void drop(QPoint at) {
    const auto mime = something();
    const auto send = [&](auto&& event) { QCoreApplication::sendEvent(desktop->window(), &event); };
    send(QDragEnterEvent(at, Qt::CopyAction, mime.get(), Qt::LeftButton, {}));
    send(QDragMoveEvent(at, Qt::CopyAction, mime.get(), Qt::LeftButton, {}));
    if (below(4))
      send(QDropEvent(at, Qt::CopyAction, mime.get(), Qt::LeftButton, {}));
    else
      send(QDragLeaveEvent());
  }
  // Composing goes on through whatever happens next, as it does when the pointer leaves the text.
  void compose() {
    QObject* const focus = QGuiApplication::focusObject();
    if (focus == nullptr) return;
    QInputMethodEvent event(QStringLiteral("ni hao ").repeated(below(2) * below(50)), {});
    if (below(2)) event.setCommitString(QStringLiteral("你好"));
    QCoreApplication::sendEvent(focus, &event);
  }
  void changeTheme() {
    if (below(2)) return QGuiApplication::setPalette(QPalette(below(2) ? Qt::black : Qt::white));
    screens().settings()->setLook(static_cast<SettingsScreen::Look>(below(3)));
  }
  // The pages and panels that few keys lead to.
  void elsewhere() {
    Navigation& navigation = *screens().navigation();
    const TimelineModel& rows = *screens().timeline()->model();
    const MemoHandle memo = rows.at(below(std::max(1, rows.rowCount())));
    switch (below(8)) {
      case 0:
      case 1:
        return navigation.show(static_cast<Navigation::Page>(below(Navigation::Settings + 1)));
      case 2:
        return screens().history()->open(memo);
      case 3:
        return screens().cards()->tick(memo, below(6));
      case 4:
        return screens().timeline()->move(memo, QDate(2026, 2, 20 + below(9)));
      case 5:
        return screens().timeline()->undoDelete();
      case 6:
        return screens().trash()->removeBetween(u"2026-02-20"_qs, u"2026-02-21"_qs);
      default:
        return screens().timeline()->showTag(u"散步"_qs);
    }
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
    const auto isSame = [&] {
      screens().timeline()->refresh();
      return !timeline.isLoadingTimeline.get() &&
             texted(timeline.allMemos.get()) == texted(onDisk.visibleEntries());
    };
    if (eventually(isSame)) return;
    EXPECT_EQ(texted(timeline.allMemos.get()), texted(onDisk.visibleEntries()));
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
  const auto before = qInstallMessageHandler(listen);
  const QPalette usual = QGuiApplication::palette();
  writeFile(folder.path() / "纪要.pdf", "%PDF-1.4");
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
  qInstallMessageHandler(before);
  EXPECT_EQ(utf8(complaints().join(u'\n')), "");
  QGuiApplication::setPalette(usual);
}

}  // namespace
}  // namespace nomely::test

#include "MonkeyTest.moc"
