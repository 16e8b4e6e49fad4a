#pragma once

#include <QObject>

class QQuickWindow;
class QAbstractItemModel;

namespace nomely {

// Has Qt's software renderer draw whole frames. Drawing only what changed, it leaves strips of a
// card that has moved, and drops the thin lines of a text that lie between two pixels. Frames in
// which nothing happened but keys that went into a text are left to it: there it is right, and
// quicker. Main thread.
class WholeFrames : public QObject {
 public:
  explicit WholeFrames(QQuickWindow& window);

  // What shows rows of the model changes with it.
  void watch(const QAbstractItemModel& model);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void begin();

  QQuickWindow& window_;
  bool isWhole_ = true;
};

}  // namespace nomely
