#include "Desktop/Models/MemoDates.h"

#include <QObject>
#include <chrono>

#include "Core/Extensions/DateFormatters.h"
#include "Desktop/Base/Qt.h"
#include "Platform/Time/ChineseDates.h"

namespace nomely {

QString MemoDates::dayName(Day day, Day today) {
  if (day == today) return QObject::tr("今天");
  if (day == today.plusDays(-1)) return QObject::tr("昨天");
  const bool isThisYear = day.civil().year() == today.civil().year();
  thread_local const ChineseDates near("M月d日 EEE");
  thread_local const ChineseDates far("yyyy年M月d日");
  return qt((isThisYear ? near : far).format(day));
}

QString MemoDates::momentName(Moment moment, Day today) {
  return dayName(Day::of(moment), today) + QLatin1Char(' ') +
         qt(DateFormatters::timeOnly.format(moment));
}

}  // namespace nomely
