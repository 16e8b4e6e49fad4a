#pragma once

#include <QObject>
#include <QString>
#include <filesystem>
#include <memory>
#include <string>

#include <QtQml/qqmlregistration.h>

#include "App/Application.h"
#include "Desktop/App/DesktopScreens.h"
#include "Desktop/App/StartRequest.h"
#include "Desktop/App/ThemeWatcher.h"
#include "Desktop/Base/QtMainExecutor.h"
#include "Desktop/Models/MemoHandle.h"
#include "Desktop/Models/Question.h"
#include "Platform/Concurrency/JobPool.h"

QT_BEGIN_NAMESPACE
class QQmlApplicationEngine;
class QQuickWindow;
QT_END_NAMESPACE

namespace nomely {

// What the machine gives the window's program. What is referred to must outlive that.
struct DesktopMachine {
  Environment environment;
  const Clock& clock;
  FileSystem& fileSystem;
  SecretBackend& secrets;
  HttpClient& http;
  WebSocketClient& webSockets;
  Timers& timers;
};

// The program of the window: the application of a root, its screens, and the window over them. It
// stays at the root's path: where that names another folder, as after a restore, all of it but the
// window is made anew, and where it names none the next one is waited for. Main thread.
class DesktopApplication : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by main")
  Q_PROPERTY(nomely::DesktopScreens* screens READ screens NOTIFY screensChanged)
  Q_PROPERTY(QString obstacle READ obstacle NOTIFY obstacleChanged)
  Q_PROPERTY(nomely::Question question READ question NOTIFY questionChanged)
  Q_PROPERTY(nomely::ThemeWatcher* theme READ theme CONSTANT)
  Q_PROPERTY(QString version READ version CONSTANT)

 public:
  DesktopApplication(DesktopMachine machine, std::filesystem::path root);
  ~DesktopApplication() override;

  // Shows the window. Throws Error when it can't be made.
  void start();
  [[nodiscard]] QQuickWindow* window() const { return window_; }
  [[nodiscard]] Application& application() { return *application_; }
  // Null while there is no root to work on.
  [[nodiscard]] DesktopScreens* screens() { return screens_.get(); }
  // Why nothing can be shown or saved for the moment; empty when nothing is in the way.
  [[nodiscard]] QString obstacle() const { return obstacle_; }
  [[nodiscard]] ThemeWatcher* theme() { return &theme_; }
  [[nodiscard]] static QString version();

  // Brings the window to the front and does what a start of the program asks for.
  void take(const StartRequest& request);

  // Puts on the disk what is not there yet, and then ends the program. Asks before it ends with a
  // text that could be put nowhere.
  Q_INVOKABLE void close();
  [[nodiscard]] const Question& question() const { return question_; }
  // The answers.
  Q_INVOKABLE void closeAnyway();
  Q_INVOKABLE void stay();

 signals:
  void screensChanged();
  void obstacleChanged();
  void questionChanged();
  // Asks the view to put the caret into the input.
  void inputAsked();

 private:
  void open();
  void leave();
  void startOver();
  void tryLater();
  void setObstacle(const QString& text);
  void ask(const Question& question);
  void end();
  [[nodiscard]] MemoHandle editedMemo() const;

  DesktopMachine machine_;
  ThemeWatcher theme_;
  std::filesystem::path root_;
  QtMainExecutor executor_;
  JobPool jobs_;
  std::unique_ptr<Application> application_;
  std::unique_ptr<DesktopScreens> screens_;
  std::unique_ptr<QQmlApplicationEngine> engine_;
  QQuickWindow* window_ = nullptr;
  QString obstacle_;
  Question question_;
  bool isClosing_ = false;
  Subscription loaded_;
  Timers::Timer again_;
  Lifetime lifetime_;
};

}  // namespace nomely
