#pragma once

#include <QQuickImageProvider>
#include <memory>

#include "Desktop/Pictures/DiagramClient.h"

namespace nomely {

// "image://diagram/KEY": the picture of a drawing. It is there at once: a `Diagram` has it drawn
// first and then tells the address. Owns what draws, so that everything of an engine finds it
// there.
class DiagramProvider final : public QQuickImageProvider {
 public:
  DiagramProvider(MainExecutor& executor, Timers& timers, DiagramHelper::Settings settings = {})
      : QQuickImageProvider(QQuickImageProvider::Image),
        client_(executor, timers, std::move(settings)) {}

  [[nodiscard]] DiagramClient& client() { return client_; }

  // Any thread.
  QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;

 private:
  DiagramClient client_;
};

}  // namespace nomely
