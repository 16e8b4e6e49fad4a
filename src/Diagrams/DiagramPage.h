#pragma once

#include <QJsonObject>
#include <QTimer>
#include <QWebChannel>
#include <deque>
#include <memory>
#include <optional>

#include "Diagrams/DiagramRequest.h"
#include "Diagrams/PageHandlers.h"

namespace nomely {

class OfflinePage;
class OfflineProfile;

// Draws one diagram after the other, each on a freshly loaded page. One that takes 15 seconds, or
// whose page crashes, is answered as such, and takes nothing with it but its page's process. Main
// thread.
class DiagramPage : public QObject {
  Q_OBJECT

 public:
  explicit DiagramPage(QObject* parent = nullptr);
  ~DiagramPage() override;

  void draw(const DiagramRequest& request);
  [[nodiscard]] bool isIdle() const { return !current_ && waiting_.empty(); }

 signals:
  // {"id", "height", "width", "png", "svg"} or {"id", "error", "message"}, where
  // `error` is one of diagram (with the library's message), nothing,
  // slow, crashed, large, pages.
  void answered(const QJsonObject& answer);

 private:
  void begin();
  void load(const QString& path);
  void failWith(const QString& error);
  void finish();
  void makePage();
  void endProcess();

  std::unique_ptr<OfflineProfile> profile_;
  PageHandlers handlers_;
  QWebChannel channel_;
  std::unique_ptr<OfflinePage> page_;
  QTimer deadline_;
  std::deque<DiagramRequest> waiting_;
  std::optional<DiagramRequest> current_;
};

}  // namespace nomely
