#include "bench/DesktopBench.h"

#include <QCoreApplication>
#include <algorithm>
#include <cstdio>
#include <fstream>

#include <fmt/format.h>

#include "Desktop/Base/Qt.h"
#include "Editor/Timeline/DayViewModel.h"

namespace nomely::bench {

void row(const std::string& what, const std::string& ours, const std::string& goal) {
  fmt::print("{:<66}{:>24}   {}\n", what, ours, goal);
  std::fflush(stdout);
}

Milliseconds Figures::at(double share) {
  if (values.empty()) return 0;
  std::ranges::sort(values);
  const auto place = static_cast<std::size_t>(share * static_cast<double>(values.size()));
  return values[std::min(values.size() - 1, place)];
}

namespace {

struct Pages {
  double resident = 0;
  double ofFiles = 0;
};
Pages pages() {
  std::ifstream file("/proc/self/statm");
  double total = 0;
  Pages pages;
  file >> total >> pages.resident >> pages.ofFiles;
  return pages;
}
double megabytes(double pages) {
  return pages * 4096 / 1e6;
}

}  // namespace

double residentMegabytes() {
  return megabytes(pages().resident);
}

double ownMegabytes() {
  return megabytes(pages().resident - pages().ofFiles);
}

BenchWindow::BenchWindow(const std::filesystem::path& root) {
  const Environment environment({{"HOME", root.parent_path().string()},
                                 {"TMPDIR", std::filesystem::temp_directory_path().string()},
                                 {"XDG_STATE_HOME", (root.parent_path() / "state").string()}});
  desktop =
      std::make_unique<DesktopApplication>(DesktopMachine{environment, clock_, posixFileSystem(),
                                                          secrets_, *http_, *webSockets_, *timers_},
                                           root);
  desktop->start();
}

void BenchWindow::until(const std::function<bool()>& condition) {
  while (!condition()) {
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
}

void BenchWindow::processEvents(int passes) {
  for (int pass = 0; pass < passes; ++pass) {
    QCoreApplication::processEvents();
    // Outside of exec() nobody else does, and what was taken off the window would stay.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
}

void BenchWindow::untilLoaded() {
  until([&] {
    return timeline().hasLoadedInitialTimeline.get() && !timeline().isLoadingTimeline.get();
  });
  processEvents(20);
}

void BenchWindow::loadAll() {
  untilLoaded();
  timeline().loadAllDisplayMemos();
  untilLoaded();
}

void BenchWindow::untilWritten() {
  bool isWritten = false;
  timeline().afterWrites([&] { isWritten = true; });
  until([&] { return isWritten; });
}

void BenchWindow::frame() {
  QEvent update(QEvent::UpdateRequest);
  QCoreApplication::sendEvent(desktop->window(), &update);
}

QQuickItem* BenchWindow::item(const char* name) const {
  return desktop->window()->findChild<QQuickItem*>(QString::fromUtf8(name));
}

void BenchWindow::key(int key, Qt::KeyboardModifiers modifiers, const QString& text) {
  for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
    QKeyEvent event(type, key, modifiers, text);
    QCoreApplication::sendEvent(desktop->window(), &event);
  }
}

}  // namespace nomely::bench
