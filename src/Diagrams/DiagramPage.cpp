#include "Diagrams/DiagramPage.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QWebEngineScript>
#include <QWebEngineScriptCollection>

#include <signal.h>

#include "Diagrams/DiagramLook.h"
#include "Diagrams/OfflinePage.h"
#include "Diagrams/PageFolder.h"

namespace nomely {
namespace {

using namespace std::chrono_literals;

// What a page needs of this program, before any script of its own.
constexpr auto bridge = R"(
(() => {
  const waiting = [];
  let handlers = null;
  window.__nomelyPost = (handler, value) => {
    if (handlers) handlers[handler](value);
    else waiting.push([handler, value]);
  };
  new QWebChannel(qt.webChannelTransport, (channel) => {
    handlers = channel.objects.handlers;
    for (const [handler, value] of waiting) handlers[handler](value);
  });
})();
)";

// An assignment whose right side is JSON.
QString assignment(const char* name, const QJsonValue& value) {
  // A document holds arrays and objects only: the brackets go again.
  const QByteArray json = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
  return QStringLiteral("window.%1 = %2;\n").arg(name, json.mid(1, json.size() - 2));
}

QString channelSource() {
  QFile file(QStringLiteral(":/qtwebchannel/qwebchannel.js"));
  return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

}  // namespace

DiagramPage::DiagramPage(QObject* parent) : QObject(parent) {
  const QString page = pagePath("mermaid.html");
  if (page.isEmpty()) return;
  profile_ = std::make_unique<OfflineProfile>(QFileInfo(page).path());
  channel_.registerObject(QStringLiteral("handlers"), &handlers_);
  connect(&handlers_, &PageHandlers::finished, this, &DiagramPage::finish);
  deadline_.setSingleShot(true);
  deadline_.setInterval(15s);
  connect(&deadline_, &QTimer::timeout, this, [this] {
    endProcess();
    failWith("slow");
  });
}

DiagramPage::~DiagramPage() = default;

void DiagramPage::draw(const DiagramRequest& request) {
  waiting_.push_back(request);
  if (!current_) begin();
}

void DiagramPage::begin() {
  if (waiting_.empty()) return;
  current_ = std::move(waiting_.front());
  waiting_.pop_front();
  handlers_.clear();
  const QString drawn = current_->svg.isEmpty() ? QString() : pagePath("svg.html");
  const QString path = drawn.isEmpty() ? pagePath("mermaid.html") : drawn;
  const bool isComplete =
      !path.isEmpty() && (path == drawn || !pagePath("mermaid.min.js").isEmpty());
  if (profile_ && isComplete)
    load(path);
  else
    failWith("pages");
}

void DiagramPage::load(const QString& path) {
  if (!page_) makePage();
  QWebEngineScript script;
  script.setInjectionPoint(QWebEngineScript::DocumentCreation);
  script.setWorldId(QWebEngineScript::MainWorld);
  script.setRunsOnSubFrames(false);
  script.setSourceCode(channelSource() + bridge +
                       assignment("__nomelyMermaidCode", current_->code) +
                       assignment("__nomelyMermaidContent", current_->svg) +
                       assignment("__nomelyTheme", diagramLook(current_->isDark)) +
                       assignment("__nomelyScale", current_->scale));
  page_->scripts().clear();
  page_->scripts().insert(script);
  deadline_.start();
  page_->load(QUrl::fromLocalFile(path));
}

void DiagramPage::failWith(const QString& error) {
  if (!current_) return;
  QJsonObject answer{{"id", current_->id}, {"error", error}};
  deadline_.stop();
  current_.reset();
  emit answered(answer);
  QMetaObject::invokeMethod(this, &DiagramPage::begin, Qt::QueuedConnection);
}

void DiagramPage::finish() {
  if (!current_) return;
  QJsonObject answer = handlers_.answer();
  answer["id"] = current_->id;
  deadline_.stop();
  current_.reset();
  emit answered(answer);
  QMetaObject::invokeMethod(this, &DiagramPage::begin, Qt::QueuedConnection);
}

void DiagramPage::makePage() {
  page_ = std::make_unique<OfflinePage>(profile_.get());
  page_->setWebChannel(&channel_);
  connect(page_.get(), &QWebEnginePage::renderProcessTerminated, this,
          [this] { failWith("crashed"); });
}

// A script in an endless loop ends with its process alone.
void DiagramPage::endProcess() {
  const qint64 process = page_->renderProcessPid();
  if (process > 0) ::kill(static_cast<pid_t>(process), SIGKILL);
  page_->disconnect(this);
  page_.release()->deleteLater();
}

}  // namespace nomely
