#include "Diagrams/OfflinePage.h"

#include <QColor>
#include <QWebEngineSettings>
#include <QWebEngineUrlRequestInfo>

namespace nomely {

OfflineProfile::Guard::Guard(const QString& folder) : folder_(QUrl::fromLocalFile(folder + '/')) {}

void OfflineProfile::Guard::interceptRequest(QWebEngineUrlRequestInfo& request) {
  const QUrl url = request.requestUrl();
  const bool isOurs = folder_.isParentOf(url.adjusted(QUrl::NormalizePathSegments));
  if (!isOurs && url.scheme() != QLatin1String("data")) request.block(true);
}

OfflineProfile::OfflineProfile(const QString& folder, QObject* parent)
    : QWebEngineProfile(parent), guard_(folder) {
  setHttpCacheType(NoCache);
  setPersistentCookiesPolicy(NoPersistentCookies);
  setSpellCheckEnabled(false);
  setUrlRequestInterceptor(&guard_);
}

OfflinePage::OfflinePage(OfflineProfile* profile, QObject* parent)
    : QWebEnginePage(profile, parent) {
  setBackgroundColor(Qt::transparent);
  for (const auto attribute :
       {QWebEngineSettings::PluginsEnabled, QWebEngineSettings::LocalStorageEnabled,
        QWebEngineSettings::JavascriptCanOpenWindows,
        QWebEngineSettings::LocalContentCanAccessRemoteUrls, QWebEngineSettings::WebGLEnabled,
        QWebEngineSettings::PdfViewerEnabled, QWebEngineSettings::AutoLoadIconsForPage,
        QWebEngineSettings::DnsPrefetchEnabled, QWebEngineSettings::HyperlinkAuditingEnabled,
        QWebEngineSettings::FullScreenSupportEnabled})
    settings()->setAttribute(attribute, false);
}

bool OfflinePage::acceptNavigationRequest(const QUrl& /*url*/, NavigationType type,
                                          bool isMainFrame) {
  return isMainFrame && type == NavigationTypeTyped;
}

QWebEnginePage* OfflinePage::createWindow(WebWindowType /*type*/) {
  return nullptr;
}

QStringList OfflinePage::chooseFiles(FileSelectionMode /*mode*/, const QStringList& /*old*/,
                                     const QStringList& /*types*/) {
  return {};
}

void OfflinePage::javaScriptAlert(const QUrl& /*origin*/, const QString& /*text*/) {}

bool OfflinePage::javaScriptConfirm(const QUrl& /*origin*/, const QString& /*text*/) {
  return false;
}

bool OfflinePage::javaScriptPrompt(const QUrl& /*origin*/, const QString& /*text*/,
                                   const QString& /*usual*/, QString* /*result*/) {
  return false;
}

// What a diagram prints may be private.
void OfflinePage::javaScriptConsoleMessage(JavaScriptConsoleMessageLevel /*level*/,
                                           const QString& /*message*/, int /*line*/,
                                           const QString& /*source*/) {}

}  // namespace nomely
