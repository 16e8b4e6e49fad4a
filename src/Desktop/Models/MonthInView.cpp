#include "Desktop/Models/MonthInView.h"

namespace nomely {

QString MonthInView::title() const {
  return tr("%1年%2月").arg(at_.year()).arg(at_.month());
}

void MonthInView::show(QDate day) {
  constexpr int lastYear = 9999;
  if (!day.isValid() || day.year() < 1 || day.year() > lastYear) return;
  at_ = day;
  emit changed();
}

}  // namespace nomely
