// Draws diagrams for the window. Reads a request a line from standard input and answers each with a
// line of JSON; ends with its input, or after a minute without a request.

#include <QByteArray>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>
#include <cstdio>
#include <cstdlib>

#include <unistd.h>

#include "Diagrams/DiagramPage.h"
#include "Diagrams/DiagramRequest.h"
#include "Diagrams/RequestLines.h"

namespace {

using namespace std::chrono_literals;

void prepareEngine() {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qunsetenv("QTWEBENGINE_REMOTE_DEBUGGING");
  // The engine's sandbox doesn't work for root, who is alone in containers.
  if (::geteuid() == 0) qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
  // The engine talks much, and to nobody here.
  if (qEnvironmentVariableIsEmpty("QT_LOGGING_RULES") && !std::freopen("/dev/null", "w", stderr))
    std::abort();
  qputenv("QTWEBENGINE_CHROMIUM_FLAGS",
          "--disable-gpu --disable-gpu-compositing --disable-background-networking --disable-sync "
          "--disable-extensions --disable-logging --disable-dev-shm-usage --no-proxy-server "
          "--host-resolver-rules=\"MAP * ~NOTFOUND\" --js-flags=--max-old-space-size=512");
}

void answer(const QJsonObject& object) {
  const QByteArray line = QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
  std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stdout);
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  prepareEngine();
  const QGuiApplication application(argc, argv);
  nomely::DiagramPage page;
  nomely::RequestLines requests;
  QTimer idle;
  idle.setInterval(60s);
  idle.setSingleShot(true);
  idle.start();

  QObject::connect(&requests, &nomely::RequestLines::lineRead, &page, [&](const QByteArray& line) {
    idle.stop();
    if (const auto request = nomely::DiagramRequest::read(line)) page.draw(*request);
    if (page.isIdle()) idle.start();
  });
  QObject::connect(&page, &nomely::DiagramPage::answered, &page, [&](const QJsonObject& object) {
    answer(object);
    if (page.isIdle()) idle.start();
  });
  QObject::connect(&requests, &nomely::RequestLines::ended, &application, &QCoreApplication::quit);
  QObject::connect(&idle, &QTimer::timeout, &application, &QCoreApplication::quit);
  return QCoreApplication::exec();
}
