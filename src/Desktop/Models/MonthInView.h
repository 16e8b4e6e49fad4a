#pragma once

#include <QDate>
#include <QObject>
#include <QString>

#include <QtQml/qqmlregistration.h>

namespace nomely {

// A month from which a day is picked, and the day that the keyboard is on. Main thread.
class MonthInView : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by a screen")
  Q_PROPERTY(int year READ year NOTIFY changed)
  Q_PROPERTY(int month READ month NOTIFY changed)  // 0 for January
  Q_PROPERTY(int day READ day NOTIFY changed)      // of the month, that is chosen so far
  Q_PROPERTY(QString title READ title NOTIFY changed)

 public:
  using QObject::QObject;

  [[nodiscard]] int year() const { return at_.year(); }
  [[nodiscard]] int month() const { return at_.month() - 1; }
  [[nodiscard]] int day() const { return at_.day(); }
  [[nodiscard]] QString title() const;

  // Shows the month of `day`, with that day chosen.
  void show(QDate day);
  Q_INVOKABLE void stepMonths(int months) { show(at_.addMonths(months)); }
  Q_INVOKABLE void stepDays(int days) { show(at_.addDays(days)); }
  // `month` counts from 0.
  Q_INVOKABLE void pick(int year, int month, int day) { show(QDate(year, month + 1, day)); }
  Q_INVOKABLE void accept() { emit chosen(at_); }

 signals:
  void changed();
  void chosen(QDate day);

 private:
  QDate at_ = QDate(2000, 1, 1);
};

}  // namespace nomely
