#pragma once

#include <QSet>
#include <QUrl>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineUrlRequestInterceptor>

namespace nomely {

// A profile that remembers nothing and lets pages read the files of one folder, nothing else: no
// network, no other file.
class OfflineProfile : public QWebEngineProfile {
  Q_OBJECT

 public:
  explicit OfflineProfile(const QString& folder, QObject* parent = nullptr);

 private:
  class Guard : public QWebEngineUrlRequestInterceptor {
   public:
    explicit Guard(const QString& folder);
    void interceptRequest(QWebEngineUrlRequestInfo& request) override;

   private:
    QUrl folder_;
  };

  Guard guard_;
};

// A page in it that goes nowhere by itself, opens no windows and asks nobody.
class OfflinePage : public QWebEnginePage {
  Q_OBJECT

 public:
  explicit OfflinePage(OfflineProfile* profile, QObject* parent = nullptr);

 protected:
  bool acceptNavigationRequest(const QUrl& url, NavigationType type, bool isMainFrame) override;
  QWebEnginePage* createWindow(WebWindowType type) override;
  QStringList chooseFiles(FileSelectionMode mode, const QStringList& old,
                          const QStringList& types) override;
  void javaScriptAlert(const QUrl& origin, const QString& text) override;
  bool javaScriptConfirm(const QUrl& origin, const QString& text) override;
  bool javaScriptPrompt(const QUrl& origin, const QString& text, const QString& usual,
                        QString* result) override;
  void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel level, const QString& message,
                                int line, const QString& source) override;
};

}  // namespace nomely
