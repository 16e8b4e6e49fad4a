#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickItem>

class QQuickWindow;

namespace nomely {

// Gives the keyboard back to what had it before a menu or a sheet, once that has closed and nothing
// else asks for it: Qt leaves it with nobody. Main thread.
class FocusReturn : public QObject {
 public:
  explicit FocusReturn(QQuickWindow& window);

 private:
  void note();
  void giveBack();
  [[nodiscard]] bool isWithNobody() const;

  QQuickWindow& window_;
  QPointer<QQuickItem> last_;
};

}  // namespace nomely
