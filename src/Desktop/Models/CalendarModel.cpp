#include "Desktop/Models/CalendarModel.h"

#include <algorithm>

#include "App/Application.h"
#include "Browser/MonthMemos.h"
#include "Desktop/Base/Qt.h"

namespace nomely {
namespace {

constexpr std::size_t monthsKept = 24;
constexpr int firstYear = 1;
constexpr int lastYear = 9999;

std::chrono::year_month monthOf(Day day) {
  return {day.civil().year(), day.civil().month()};
}

bool isInCalendar(std::chrono::year_month month) {
  return month.year() >= std::chrono::year(firstYear) &&
         month.year() <= std::chrono::year(lastYear);
}

}  // namespace

CalendarModel::CalendarModel(const ScreenContext& context)
    : context_(context),
      month_(monthOf(context.clock.today())),
      today_(context.clock.today()),
      cursor_(today_),
      work_(context.executor, context.jobs) {}

int CalendarModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : cells;
}

QHash<int, QByteArray> CalendarModel::roleNames() const {
  return {{DayNumber, "dayNumber"}, {Shade, "shade"},     {Count, "count"}, {IsToday, "isToday"},
          {IsChosen, "isChosen"},   {IsAhead, "isAhead"}, {Label, "label"}};
}

QVariant CalendarModel::data(const QModelIndex& index, int role) const {
  const Day day = firstCell().plusDays(index.row());
  const bool isOfMonth = monthOf(day) == month_;
  const auto count = static_cast<int>(isOfMonth ? countOf(day) : 0);
  switch (role) {
    case DayNumber:
      return isOfMonth ? static_cast<int>(static_cast<unsigned>(day.civil().day())) : 0;
    case Shade:
      return shadeOf(static_cast<std::size_t>(count));
    case Count:
      return count;
    case IsToday:
      return isOfMonth && day == today_;
    case IsChosen:
      return isOfMonth && chosen_.isValid() && dayOf(chosen_) == day;
    case IsAhead:
      return day > today_;
    case Label:
      return tr("%1，%2 条").arg(qt(spoken_.format(day))).arg(count);
    default:
      return {};
  }
}

QString CalendarModel::title() const {
  return tr("%1年%2月")
      .arg(static_cast<int>(month_.year()))
      .arg(static_cast<unsigned>(month_.month()));
}

int CalendarModel::shadeOf(std::size_t count) {
  if (count == 0) return 0;
  return count < 2 ? 1 : count < 4 ? 2 : count < 6 ? 3 : 4;
}

Day CalendarModel::firstCell() const {
  const std::chrono::sys_days first = month_ / 1;
  return Day(first).plusDays(1 - static_cast<int>(std::chrono::weekday(first).iso_encoding()));
}

int CalendarModel::cellOf(Day day) const {
  return static_cast<int>(qtDate(firstCell()).daysTo(qtDate(day)));
}

QDate CalendarModel::dayAt(int cell) const {
  const Day day = firstCell().plusDays(cell);
  return monthOf(day) == month_ ? qtDate(day) : QDate();
}

std::size_t CalendarModel::countOf(Day day) const {
  const auto month = counts_.find(month_);
  if (month == counts_.end()) return 0;
  const auto found = month->second.find(static_cast<unsigned>(day.civil().day()));
  return found == month->second.end() ? 0 : found->second;
}

void CalendarModel::setCursor(int cell) {
  if (const QDate day = dayAt(cell); day.isValid()) show(dayOf(day));
}

void CalendarModel::moveDays(int count) {
  show(cursor_.plusDays(count));
}

void CalendarModel::moveMonths(int count) {
  const Month month = month_ + std::chrono::months(count);
  if (!isInCalendar(month)) return;
  const Day last{month / std::chrono::last};
  const auto number = std::min(cursor_.civil().day(), last.civil().day());
  show(Day(month / number));
}

void CalendarModel::goToToday() {
  show(today_);
}

void CalendarModel::show(Day cursor) {
  if (!isInCalendar(monthOf(cursor))) return;
  cursor_ = cursor;
  if (std::exchange(month_, monthOf(cursor)) != monthOf(cursor)) {
    tell();
    emit monthChanged();
    read();
  }
  emit cursorChanged();
}

void CalendarModel::choose(QDate day) {
  if (std::exchange(chosen_, day) == day) return;
  if (day.isValid()) show(dayOf(day));
  tell({IsChosen});
}

void CalendarModel::setToday(Day today) {
  if (std::exchange(today_, today) != today) tell({IsToday, IsAhead});
}

void CalendarModel::refresh() {
  const auto shown = counts_.extract(month_);
  counts_.clear();
  if (shown) counts_.emplace(shown.key(), shown.mapped());
  read();
}

void CalendarModel::read() {
  const DayStore& store = context_.application.dayStore();
  work_.run([&store, month = month_](
                const std::stop_token& stop) { return memoCountsOfMonth(month, store, stop); },
            [this, month = month_](Counts&& counts) {
              if (counts_.size() >= monthsKept) counts_.clear();
              counts_.insert_or_assign(month, std::move(counts));
              if (month == month_) tell({Shade, Count, Label});
            });
}

void CalendarModel::tell(const QList<int>& roles) {
  emit dataChanged(index(0), index(cells - 1), roles);
}

}  // namespace nomely
