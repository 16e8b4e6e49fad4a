#pragma once

#include <QElapsedTimer>
#include <QKeyEvent>
#include <QQuickItem>
#include <QQuickWindow>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Desktop/App/DesktopApplication.h"
#include "Platform/Concurrency/Timers.h"
#include "Platform/Network/HttpClient.h"
#include "Platform/Network/WebSocketClient.h"
#include "Platform/Settings/MemorySecrets.h"

namespace nomely::bench {

using Milliseconds = double;

// One line: what was measured, our figure, the goal.
void row(const std::string& what, const std::string& ours, const std::string& goal);

template <typename Work>
Milliseconds timed(Work work) {
  QElapsedTimer timer;
  timer.start();
  work();
  return static_cast<Milliseconds>(timer.nsecsElapsed()) / 1e6;
}

struct Figures {
  std::vector<Milliseconds> values;
  // The value that this share of them doesn't exceed.
  [[nodiscard]] Milliseconds at(double share);
};

// With what is mapped from files, such as fonts, and what is the process's own alone.
[[nodiscard]] double residentMegabytes();
[[nodiscard]] double ownMegabytes();

// The program's window over a root, with its parts on the system's clock, disk and timers.
class BenchWindow {
 public:
  explicit BenchWindow(const std::filesystem::path& root);

  static void until(const std::function<bool()>& condition);
  static void processEvents(int passes);
  // Until the first list stands.
  void untilLoaded();
  // And all of it is in the list.
  void loadAll();
  // Until all that was changed is on the disk.
  void untilWritten();
  // Draws what has changed, now.
  void frame();
  [[nodiscard]] QQuickItem* item(const char* name) const;

  void key(int key, Qt::KeyboardModifiers modifiers = {}, const QString& text = {});
  [[nodiscard]] DesktopScreens& screens() { return *desktop->screens(); }
  [[nodiscard]] DayViewModel& timeline() { return desktop->application().dayViewModel(); }

  std::unique_ptr<DesktopApplication> desktop;

 private:
  SystemClock clock_;
  MemorySecrets secrets_;
  std::unique_ptr<HttpClient> http_ = makeHttpClient();
  std::unique_ptr<WebSocketClient> webSockets_ = makeWebSocketClient();
  std::unique_ptr<Timers> timers_ = makeSystemTimers();
};

// What an hour of use, written down as 100,000 events, does to the memory. `root` is copied.
void measureHour(const std::filesystem::path& root);

}  // namespace nomely::bench
