// Measures the window offscreen, with the renderer that it has on every desktop:
//
//   nomely-desktop-bench FOLDER [FIGURE...]     two corpora are made in it the first time
//
// Without names of figures all of them are measured. Each stands beside its goal; nothing here
// decides a test.

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QProcess>
#include <QQmlApplicationEngine>
#include <algorithm>

#include <fmt/format.h>

#include "Desktop/Base/Qt.h"
#include "Editor/Timeline/DayViewModel.h"
#include "bench/Corpus.h"
#include "bench/DesktopBench.h"

extern void qml_register_types_Nomely();

namespace nomely::bench {
namespace {

namespace fs = std::filesystem;

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
  BenchWindow window(root);
  QObject::connect(window.desktop->window(), &QQuickWindow::frameSwapped, [&] {
    if (window.screens().timeline()->model()->rowCount() > 0) std::_Exit(0);
  });
  return QGuiApplication::exec();
}

Milliseconds processTime(const QStringList& arguments) {
  return timed([&] {
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QCoreApplication::applicationFilePath(), arguments);
    process.waitForFinished(120000);
  });
}

// The pictures of a corpus are no more than a pixel each: photographs take their places.
void putPhotographs(const fs::path& root) {
  QImage photograph(1600, 1200, QImage::Format_RGB32);
  int number = 0;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    const fs::path& file = entry.path();
    if (file.extension() != ".jpg" && file.extension() != ".png") continue;
    QPainter painter(&photograph);
    QLinearGradient sky(0, 0, 1600, 1200);
    sky.setColorAt(0, QColor::fromHsv(++number * 37 % 360, 160, 230));
    sky.setColorAt(1, QColor::fromHsv(number * 61 % 360, 200, 90));
    painter.fillRect(photograph.rect(), sky);
    painter.end();
    photograph.save(qt(file.string()), nullptr, 85);
  }
}

fs::path corpus(const fs::path& folder, std::uint64_t memos) {
  constexpr std::uint64_t mostWithPhotographs = 10000;
  const fs::path root = folder / fmt::format("corpus-{}", memos);
  if (fs::exists(root)) return root;
  writeCorpus({.memos = memos, .mediaBytes = 20'000'000}, root);
  if (memos <= mostWithPhotographs) putPhotographs(root);
  return root;
}

// In turn, so that both see the same neighbours on the machine.
void measureStart(const fs::path& root) {
  Figures empty;
  Figures ours;
  for (int run = 0; run < 9; ++run) {
    empty.values.push_back(processTime({"--child", "empty"}));
    ours.values.push_back(processTime({"--child", "window", qt(root.string())}));
  }
  row("start to the first frame with notes, 100,000 on disk",
      fmt::format("{:.0f} ms ({:+.0f})", ours.at(0.5), ours.at(0.5) - empty.at(0.5)),
      fmt::format("an empty window's {:.0f} + 300 ms", empty.at(0.5)));
}

// Moves by 90 pixels a frame, to the end.
void measureScrolling(const fs::path& root) {
  BenchWindow window(root);
  window.loadAll();
  const double before = residentMegabytes();
  QQuickItem* list = window.item("timeline");
  Figures figures;
  while (!list->property("atYEnd").toBool()) {
    figures.values.push_back(timed([&] {
      list->setProperty("contentY", list->property("contentY").toDouble() + 90);
      window.frame();
    }));
    BenchWindow::processEvents(1);
  }
  row("scrolling 2,000 cards, a frame: p95 / longest",
      fmt::format("{:.1f} / {:.1f} ms", figures.at(0.95), figures.at(1)), "12 / 40 ms");
  row("memory after it, and without fonts and libraries",
      fmt::format("{:.0f} MB ({:+.0f}), {:.0f} MB", residentMegabytes(),
                  residentMegabytes() - before, ownMegabytes()),
      "150 MB");
}

void measurePins(const fs::path& root, const char* among) {
  BenchWindow window(root);
  window.loadAll();
  Figures figures;
  TimelineScreen& timeline = *window.screens().timeline();
  for (int i = 0; i < 30; ++i) {
    figures.values.push_back(timed([&] {
      timeline.togglePinned(timeline.model()->at(1));
      window.frame();
    }));
    window.untilWritten();
    BenchWindow::processEvents(5);
  }
  row(fmt::format("a pin among {}, to its frame", among), fmt::format("{:.1f} ms", figures.at(0.5)),
      "16 ms");
}

// Keys in the middle of a text of 20,000 characters with all kinds of marks.
void measureTyping(const fs::path& root) {
  BenchWindow window(root);
  window.untilLoaded();
  QString text;
  while (text.size() < 20000)
    text += QString::fromUtf8(
        "下班路上想到：读过的书按**问题**串起来，比按书名好找得多。 #读书/方法 看 "
        "https://example.org/a 再说。\n- [ ] 一件事\n\n");
  MarkdownEditor& editor = *window.screens().quickInput()->editor();
  editor.setText(text);
  editor.area()->forceActiveFocus();
  editor.area()->setProperty("cursorPosition", text.size() / 2);
  BenchWindow::processEvents(200);
  Figures figures;
  for (int i = 0; i < 300; ++i) {
    figures.values.push_back(timed([&] {
      window.key(Qt::Key_A, {}, QStringLiteral("字"));
      window.frame();
    }));
    BenchWindow::processEvents(5);
  }
  row("a key in a text of 20,000 characters, to its frame: p95 / longest",
      fmt::format("{:.1f} / {:.1f} ms", figures.at(0.95), figures.at(1)), "8 ms");
  editor.area()->setProperty("text", QString());
  BenchWindow::until([&] { return !window.screens().quickInput()->isFilled(); });
  if (!window.screens().flush()) throw std::runtime_error("the draft is on no disk");
}

// From the last key of a word to the frame with what was found, typed at ten keys a second.
void measureSearch(const fs::path& root) {
  constexpr int typingInterval = 100;
  BenchWindow window(root);
  window.untilLoaded();
  BenchWindow::until([&] { return window.desktop->application().searchIndex().isBuilt(); });
  SearchScreen& search = *window.screens().search();
  QQuickItem* line = window.item("searchLine");
  line->forceActiveFocus();
  bool isAnswered = false;
  QObject::connect(&search, &SearchScreen::answered, [&] { isAnswered = true; });
  Figures figures;
  for (int round = 0; round < 3; ++round)
    for (const char* words :
         {"咖啡", "读书 周末", "meeting", "#工作", "龘靐", "的", "没有这句话"}) {
      line->setProperty("text", QString());
      search.setQuery({});
      BenchWindow::processEvents(20);
      QElapsedTimer sinceKey;
      for (const QChar character : QString::fromUtf8(words)) {
        BenchWindow::until(
            [&] { return !sinceKey.isValid() || sinceKey.hasExpired(typingInterval); });
        sinceKey.start();
        isAnswered = false;
        window.key(Qt::Key_unknown, {}, QString(character));
      }
      BenchWindow::until([&] { return isAnswered; });
      window.frame();
      figures.values.push_back(static_cast<Milliseconds>(sinceKey.nsecsElapsed()) / 1e6);
    }
  row("found among 100,000, from the last key to its frame: median / longest",
      fmt::format("{:.1f} / {:.1f} ms", figures.at(0.5), figures.at(1)), "60 ms");
}

int run(const fs::path& folder, const QStringList& figures) {
  fs::create_directories(folder);
  const auto measures = [&](const char* figure) {
    return figures.isEmpty() || figures.contains(QLatin1String(figure));
  };
  const fs::path small = corpus(folder, 2000);
  const fs::path large = corpus(folder, 100000);
  if (measures("start")) measureStart(large);
  if (measures("scroll")) measureScrolling(small);
  if (measures("type")) measureTyping(small);
  if (measures("search")) measureSearch(large);
  if (measures("pin")) measurePins(small, "2,000");
  if (measures("pin")) measurePins(large, "100,000");
  if (measures("hour")) measureHour(small);
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
  return nomely::bench::run(given.isEmpty() ? "desktop-bench" : nomely::utf8(given.first()),
                            given.mid(1));
}
