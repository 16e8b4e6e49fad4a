#pragma once

#include <QHash>
#include <QImage>
#include <QObject>
#include <QSizeF>
#include <QString>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <stop_token>
#include <string>

#include "Editor/Diagrams/DiagramHelper.h"
#include "Platform/Concurrency/Lifetime.h"
#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/Concurrency/SerialQueue.h"

namespace nomely {

// One source in one look at one scale: waited for, drawn, or failed for good. Shared by all cards
// that show it. Main thread.
class DiagramDrawing : public QObject {
  Q_OBJECT

 public:
  struct Result {
    std::shared_ptr<const QImage> image;  // null when it failed
    QSizeF size;                          // in points
    QString failure;                      // what to tell the user
    bool isMissing = false;               // nothing here can draw
  };

  DiagramDrawing(QString key, QString source) : key_(std::move(key)), source_(std::move(source)) {}

  [[nodiscard]] const QString& key() const { return key_; }
  // The same for each look and scale.
  [[nodiscard]] const QString& source() const { return source_; }
  [[nodiscard]] bool isFinished() const { return isFinished_; }
  [[nodiscard]] const Result& result() const { return result_; }
  void finish(Result result);

 signals:
  void finished();

 private:
  QString key_;
  QString source_;
  Result result_;
  bool isFinished_ = false;
};

// Has diagrams drawn, one after the other on a thread of its own, and keeps the latest. What nobody
// wants any more when its turn comes isn't drawn. Main thread, but for `image`.
class DiagramClient : public QObject {
  Q_OBJECT

 public:
  // How many drawings stay when no card shows them, and how large they may be together.
  static constexpr std::size_t keptDrawings = 24;
  static constexpr qsizetype keptBytes = qsizetype{48} << 20;

  DiagramClient(MainExecutor& executor, Timers& timers, DiagramHelper::Settings settings);
  ~DiagramClient() override;

  // The drawing of that source, begun if it is a new one. Whoever wants it holds it.
  [[nodiscard]] std::shared_ptr<DiagramDrawing> drawing(const QString& code, DiagramLook look,
                                                        double scale);
  // Points that the source took when it was last drawn in any look; 0 when it never was.
  [[nodiscard]] double knownHeight(const QString& code) const;
  // The picture of a drawing that somebody holds, or that is kept. Any thread.
  [[nodiscard]] QImage image(const QString& key) const;

 private:
  void draw(const std::shared_ptr<DiagramDrawing>& drawing, DiagramRequest request);
  [[nodiscard]] DiagramDrawing::Result render(const DiagramRequest& request);
  void finish(const std::shared_ptr<DiagramDrawing>& drawing, DiagramDrawing::Result result);
  void keep(const std::shared_ptr<DiagramDrawing>& drawing);
  void forgetGone();

  MainExecutor& executor_;
  DiagramHelper helper_;
  std::map<QString, std::weak_ptr<DiagramDrawing>> byKey_;
  std::deque<std::shared_ptr<DiagramDrawing>> kept_;
  QHash<QString, double> heights_;  // by source
  mutable std::mutex imagesMutex_;
  std::map<QString, std::weak_ptr<const QImage>> images_;  // guarded by imagesMutex_
  std::stop_source ending_;
  Lifetime lifetime_;
  SerialQueue queue_{"com.nomely.diagrams"};
};

}  // namespace nomely
