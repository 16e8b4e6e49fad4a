#include <QCommandLineParser>
#include <QGuiApplication>
#include <QQuickWindow>
#include <cstdio>
#include <memory>

#include "App/ChosenRoot.h"
#include "Desktop/App/DesktopApplication.h"
#include "Desktop/App/SingleInstance.h"
#include "Desktop/Base/Qt.h"
#include "Platform/Concurrency/Timers.h"
#include "Platform/Network/HttpClient.h"
#include "Platform/Network/WebSocketClient.h"
#include "Platform/Settings/DesktopSecrets.h"

// The registration of a module lies in a library, which leaves out what nothing calls.
extern void qml_register_types_Nomely();

namespace {

int run() {
  QCommandLineParser parser;
  parser.setApplicationDescription(QObject::tr("Nomely 日记和备忘的窗口"));
  parser.addHelpOption();
  parser.addVersionOption();
  parser.addOption({QStringLiteral("root"), QObject::tr("数据目录"), QObject::tr("文件夹")});
  nomely::StartRequest::addOptions(parser);
  parser.process(*QCoreApplication::instance());
  const nomely::StartRequest request = nomely::StartRequest::of(parser);

  const nomely::Environment environment = nomely::Environment::current();
  const std::filesystem::path root =
      nomely::ChosenRoot::of(nomely::utf8(parser.value(QStringLiteral("root"))), environment,
                             nomely::FileManager(nomely::posixFileSystem()));
  nomely::SingleInstance instance(root, environment.stateFolder());
  if (instance.claim(request) == nomely::SingleInstance::Role::handedOver) return 0;

  const nomely::SystemClock clock;
  nomely::DesktopSecrets secrets(environment, nomely::posixFileSystem());
  const nomely::NetworkOptions network = nomely::NetworkOptions::of(environment);
  const std::unique_ptr<nomely::HttpClient> http = nomely::makeHttpClient(network);
  const std::unique_ptr<nomely::WebSocketClient> webSockets = nomely::makeWebSocketClient(network);
  const std::unique_ptr<nomely::Timers> timers = nomely::makeSystemTimers();
  nomely::DesktopApplication desktop(
      {environment, clock, nomely::posixFileSystem(), secrets, *http, *webSockets, *timers}, root);
  QObject::connect(&instance, &nomely::SingleInstance::requested, &desktop,
                   &nomely::DesktopApplication::take);
  desktop.start();
  desktop.take(request);
  return QGuiApplication::exec();
}

}  // namespace

int main(int count, char** arguments) {
  // Scrolling through drawn-in-software OpenGL takes four times as long as without it.
  if (!qEnvironmentVariableIsSet("NOMELY_GPU"))
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
  const QGuiApplication application(count, arguments);
  QGuiApplication::setApplicationName(QStringLiteral("nomely-desktop"));
  QGuiApplication::setApplicationDisplayName(QStringLiteral("Nomely"));
  QGuiApplication::setDesktopFileName(QStringLiteral("nomely"));
  QGuiApplication::setApplicationVersion(nomely::DesktopApplication::version());
  qml_register_types_Nomely();
  try {
    return run();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "nomely-desktop: %s\n", error.what());
    return 1;
  }
}
