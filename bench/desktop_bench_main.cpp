// Measures the window offscreen, with the renderer that it has on every desktop:
//
//   nomely-desktop-bench FOLDER          two corpora are made in it the first time
//
// Each figure stands beside its goal; nothing here decides a test.

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QProcess>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "Desktop/App/DesktopApplication.h"
#include "Desktop/Base/Qt.h"
#include "Editor/Timeline/DayViewModel.h"
#include "Platform/Concurrency/Timers.h"
#include "Platform/Network/HttpClient.h"
#include "Platform/Network/WebSocketClient.h"
#include "Platform/Settings/MemorySecrets.h"
#include "bench/Corpus.h"

extern void qml_register_types_Nomely();

namespace nomely::bench {
namespace {

namespace fs = std::filesystem;
using Milliseconds = double;

void row(const std::string& what, const std::string& ours, const std::string& goal) {
  fmt::print("{:<58}{:>24}   {}\n", what, ours, goal);
  std::fflush(stdout);
}

template <typename Work>
Milliseconds timed(Work work) {
  QElapsedTimer timer;
  timer.start();
  work();
  return static_cast<Milliseconds>(timer.nsecsElapsed()) / 1e6;
}

struct Figures {
  std::vector<Milliseconds> values;
  [[nodiscard]] Milliseconds at(double share) {
    std::ranges::sort(values);
    return values.empty()
               ? 0
               : values[std::min(
                     values.size() - 1,
                     static_cast<std::size_t>(share * static_cast<double>(values.size())))];
  }
};

double residentMegabytes() {
  std::ifstream file("/proc/self/statm");
  double total = 0;
  double resident = 0;
  file >> total >> resident;
  return resident * 4096 / 1e6;
}

class Window {
 public:
  explicit Window(const fs::path& root) {
    const Environment environment({{"HOME", root.parent_path().string()},
                                   {"TMPDIR", fs::temp_directory_path().string()},
                                   {"XDG_STATE_HOME", (root.parent_path() / "state").string()}});
    desktop = std::make_unique<DesktopApplication>(
        DesktopMachine{environment, clock_, posixFileSystem(), secrets_, *http_, *webSockets_,
                       *timers_},
        root);
    desktop->start();
  }

  void until(const std::function<bool()>& condition) {
    while (!condition()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
  }
  void untilLoaded() {
    DayViewModel& timeline = desktop->application().dayViewModel();
    until([&] {
      return timeline.hasLoadedInitialTimeline.get() && !timeline.isLoadingTimeline.get();
    });
    for (int pass = 0; pass < 20; ++pass) QCoreApplication::processEvents();
  }
  // Draws what has changed, now.
  void frame() {
    QEvent update(QEvent::UpdateRequest);
    QCoreApplication::sendEvent(desktop->window(), &update);
  }
  [[nodiscard]] QQuickItem* item(const char* name) const {
    return desktop->window()->findChild<QQuickItem*>(QString::fromUtf8(name));
  }
  // The time of each frame while the list moves by 90 pixels a frame.
  Figures scroll(int frames) {
    QQuickItem* list = item("timeline");
    Figures figures;
    for (int i = 0; i < frames; ++i) {
      figures.values.push_back(timed([&] {
        list->setProperty("contentY", list->property("contentY").toDouble() + 90);
        frame();
      }));
      QCoreApplication::processEvents();
    }
    return figures;
  }

  std::unique_ptr<DesktopApplication> desktop;

 private:
  SystemClock clock_;
  MemorySecrets secrets_;
  std::unique_ptr<HttpClient> http_ = makeHttpClient();
  std::unique_ptr<WebSocketClient> webSockets_ = makeWebSocketClient();
  std::unique_ptr<Timers> timers_ = makeSystemTimers();
};

// A process that ends with its first frame that shows something.
int showEmpty() {
  QQmlApplicationEngine engine;
  engine.loadData(
      "import QtQuick\nWindow { width: 1280; height: 800; visible: true; Text { text: \"1\" } }");
  auto* window = qobject_cast<QQuickWindow*>(engine.rootObjects().first());
  QObject::connect(window, &QQuickWindow::frameSwapped, [] { std::_Exit(0); });
  return QGuiApplication::exec();
}

int showWindow(const fs::path& root) {
  Window window(root);
  QObject::connect(window.desktop->window(), &QQuickWindow::frameSwapped, [&] {
    if (window.desktop->screens()->timeline()->model()->rowCount() > 0) std::_Exit(0);
  });
  return QGuiApplication::exec();
}

Milliseconds processTime(const QStringList& arguments) {
  Figures figures;
  for (int run = 0; run < 7; ++run)
    figures.values.push_back(timed([&] {
      QProcess process;
      process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
      process.start(QCoreApplication::applicationFilePath(), arguments);
      process.waitForFinished(120000);
    }));
  return figures.at(0.5);
}

fs::path corpus(const fs::path& folder, std::uint64_t memos) {
  const fs::path root = folder / fmt::format("corpus-{}", memos);
  if (!fs::exists(root)) writeCorpus({.memos = memos, .mediaBytes = 20'000'000}, root);
  return root;
}

void measureStart(const fs::path& root) {
  const Milliseconds empty = processTime({"--child", "empty"});
  const Milliseconds ours = processTime({"--child", "window", qt(root.string())});
  row("start to the first frame with notes, 100,000 on disk",
      fmt::format("{:.0f} ms ({:+.0f})", ours, ours - empty),
      fmt::format("an empty window's {:.0f} + 300 ms", empty));
}

void measureScrolling(const fs::path& root) {
  Window window(root);
  window.untilLoaded();
  window.desktop->application().dayViewModel().loadAllDisplayMemos();
  window.untilLoaded();
  const double before = residentMegabytes();
  Figures figures = window.scroll(2500);
  row("scrolling 2,000 cards, a frame: p95 / longest",
      fmt::format("{:.1f} / {:.1f} ms", figures.at(0.95), figures.at(1)), "12 / 40 ms");
  row("memory after it",
      fmt::format("{:.0f} MB ({:+.0f})", residentMegabytes(), residentMegabytes() - before),
      "150 MB");
}

void measurePins(const fs::path& root, const char* among) {
  Window window(root);
  window.untilLoaded();
  window.desktop->application().dayViewModel().loadAllDisplayMemos();
  window.untilLoaded();
  Figures figures;
  TimelineScreen& timeline = *window.desktop->screens()->timeline();
  for (int i = 0; i < 30; ++i) {
    figures.values.push_back(timed([&] {
      timeline.togglePinned(timeline.model()->at(1));
      window.frame();
    }));
    bool isWritten = false;
    window.desktop->application().dayViewModel().afterWrites([&] { isWritten = true; });
    window.until([&] { return isWritten; });
    for (int pass = 0; pass < 5; ++pass) QCoreApplication::processEvents();
  }
  row(fmt::format("a pin among {}, to its frame", among), fmt::format("{:.1f} ms", figures.at(0.5)),
      "16 ms");
}

// Keys in the middle of a text of 20,000 characters with all kinds of marks.
void measureTyping(const fs::path& root) {
  Window window(root);
  window.untilLoaded();
  QString text;
  while (text.size() < 20000)
    text += QString::fromUtf8(
        "下班路上想到：读过的书按**问题**串起来，比按书名好找得多。 #读书/方法 看 "
        "https://example.org/a 再说。\n- [ ] 一件事\n\n");
  MarkdownEditor& editor = *window.desktop->screens()->quickInput()->editor();
  editor.setText(text);
  editor.area()->forceActiveFocus();
  editor.area()->setProperty("cursorPosition", text.size() / 2);
  for (int pass = 0; pass < 200; ++pass) QCoreApplication::processEvents();
  Figures figures;
  for (int i = 0; i < 300; ++i) {
    figures.values.push_back(timed([&] {
      QKeyEvent press(QEvent::KeyPress, Qt::Key_A, {}, QStringLiteral("字"));
      QCoreApplication::sendEvent(window.desktop->window(), &press);
      window.frame();
    }));
    for (int pass = 0; pass < 5; ++pass) QCoreApplication::processEvents();
  }
  row("a key in a text of 20,000 characters, to its frame: p95 / longest",
      fmt::format("{:.1f} / {:.1f} ms", figures.at(0.95), figures.at(1)), "8 ms");
  editor.setText({});
}

int run(const fs::path& folder) {
  fs::create_directories(folder);
  const fs::path small = corpus(folder, 2000);
  const fs::path large = corpus(folder, 100000);
  measureStart(large);
  measureScrolling(small);
  measureTyping(small);
  measurePins(small, "2,000");
  measurePins(large, "100,000");
  return 0;
}

}  // namespace
}  // namespace nomely::bench

int main(int count, char** arguments) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
  const QGuiApplication application(count, arguments);
  qml_register_types_Nomely();
  const QStringList given = QCoreApplication::arguments().mid(1);
  if (given.value(0) == u"--child" && given.value(1) == u"empty") return nomely::bench::showEmpty();
  if (given.value(0) == u"--child") return nomely::bench::showWindow(nomely::utf8(given.value(2)));
  return nomely::bench::run(given.isEmpty() ? "desktop-bench" : nomely::utf8(given.first()));
}
