#pragma once

#include <QPoint>
#include <QQuickItem>
#include <QQuickWindow>
#include <QString>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Desktop/App/DesktopApplication.h"
#include "Desktop/Base/Qt.h"
#include "Platform/Settings/MemorySecrets.h"
#include "Support/ManualClock.h"
#include "Support/Matchers.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {

// The program of the window over a root of its own, offscreen, driven by events as a user's hands
// make them.
class DesktopTest : public testing::Test {
 protected:
  DesktopTest();
  ~DesktopTest() override;

  // The window of `root`, once its first list stands and maintenance is over.
  void open();
  // As a user closes it; returns when the program would end.
  void close();

  // Writes a memo's file as another program would.
  void put(const std::string& day, int number, const std::string& body,
           const std::string& header = "time: \"08:30\"");
  [[nodiscard]] DesktopScreens& screens() { return *desktop->screens(); }

  // The visible item of that objectName, the `nth` of several from the top; null when there is
  // none.
  [[nodiscard]] QQuickItem* item(const char* objectName, int nth = 0) const;
  // The same once it is there; fails the test and returns null when it doesn't come.
  [[nodiscard]] QQuickItem* need(const char* objectName, int nth = 0) const;
  void click(const char* objectName, Qt::MouseButton button = Qt::LeftButton);
  void click(QQuickItem* item, Qt::MouseButton button = Qt::LeftButton);
  void clickAt(QPoint point, Qt::MouseButton button = Qt::LeftButton);
  // "Ctrl+Shift+P", or several, one after the other: "Down, Down, Return".
  void key(const char* keys);
  void type(const QString& text);
  [[nodiscard]] QString textOf(const char* objectName, int nth = 0) const;

  // Whether a file below the root is there and holds that text.
  [[nodiscard]] bool holds(const std::string& file, std::string_view text) const {
    return fs::exists(root / file) && readFile(root / file).find(text) != std::string::npos;
  }

  // Lets the program run until `condition` holds; false at the deadline.
  [[nodiscard]] static bool eventually(const std::function<bool()>& condition);
  // Lets the program run until nothing is left to be done at once, and a frame is drawn.
  void settle() const;
  // The window as it looks; written to $NOMELY_PICTURES when that is set.
  QImage grab(const char* name) const;

  TemporaryFolder folder;
  fs::path root = folder.path() / "root";
  fs::path state = folder.path() / "state";
  ManualClock clock;
  FileSystem* fileSystem = &posixFileSystem();
  MemorySecrets secrets;
  std::unique_ptr<HttpClient> http;
  std::unique_ptr<WebSocketClient> webSockets;
  std::unique_ptr<Timers> timers;
  QSize size{1280, 800};
  std::unique_ptr<DesktopApplication> desktop;
};

}  // namespace nomely::test
