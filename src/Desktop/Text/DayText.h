#pragma once

#include <QCoreApplication>
#include <QDate>
#include <QString>

namespace nomely {

// Days as a person would name them.
struct DayText {
  Q_DECLARE_TR_FUNCTIONS(DayText)

 public:
  // "今天", "昨天", "6月17日", of another year than today's with its year.
  [[nodiscard]] static QString relative(QDate day, QDate today) {
    switch (day.daysTo(today)) {
      case 0:
        return tr("今天");
      case 1:
        return tr("昨天");
      case -1:
        return tr("明天");
      default:
        return absolute(day, today);
    }
  }
  [[nodiscard]] static QString absolute(QDate day, QDate today) {
    return day.year() == today.year()
               ? tr("%1月%2日").arg(day.month()).arg(day.day())
               : tr("%1年%2月%3日").arg(day.year()).arg(day.month()).arg(day.day());
  }
};

}  // namespace nomely
