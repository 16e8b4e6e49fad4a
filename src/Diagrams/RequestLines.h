#pragma once

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>
#include <functional>

namespace nomely {

// Standard input, line by line, without ever blocking. Main thread.
class RequestLines : public QObject {
  Q_OBJECT

 public:
  // A longer line ends the program's input: nothing that wants a diagram sends one.
  static constexpr qsizetype longestLine = qsizetype{8} << 20;

  explicit RequestLines(QObject* parent = nullptr);

 signals:
  void lineRead(const QByteArray& line);
  void ended();

 private:
  void readAvailable();

  QByteArray unread_;
  QSocketNotifier notifier_;
};

}  // namespace nomely
