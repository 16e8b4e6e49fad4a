#include "Desktop/Models/OverviewModels.h"

#include <algorithm>
#include <cstdlib>
#include <tuple>
#include <utility>

#include "Desktop/Base/Qt.h"
#include "Desktop/Models/CalendarModel.h"

namespace nomely {
namespace {

// "6日 09:30"
QString whenText(unsigned day, const std::string& time) {
  return QObject::tr("%1日 %2").arg(day).arg(qt(time)).trimmed();
}

QString lookOf(const std::map<std::string, std::string>& looks, const std::string& tag) {
  const auto found = looks.find(tag);
  return found == looks.end() ? QString() : qt(found->second);
}

}  // namespace

int MonthBarsModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(counts_.size());
}

QHash<int, QByteArray> MonthBarsModel::roleNames() const {
  return {{DayNumber, "dayNumber"}, {Count, "count"},   {Height, "share"},    {Shade, "shade"},
          {IsToday, "isToday"},     {IsRest, "isRest"}, {IsNamed, "isNamed"}, {Label, "label"}};
}

QVariant MonthBarsModel::data(const QModelIndex& index, int role) const {
  const int day = index.row() + 1;
  const QDate date(year_, month_, day);
  if (!date.isValid()) return {};
  const std::size_t count = countOf(day);
  switch (role) {
    case DayNumber:
      return day;
    case Count:
      return static_cast<int>(count);
    case Height:
      return static_cast<double>(count) / static_cast<double>(most_);
    case Shade:
      return CalendarModel::shadeOf(count);
    case IsToday:
      return date == today_;
    case IsRest:
      return date.dayOfWeek() >= Qt::Saturday;
    case IsNamed:
      return isNamed(date);
    case Label:
      return tr("%1月%2日，%3 条").arg(month_).arg(day).arg(count);
    default:
      return {};
  }
}

// No name stands too near to today's.
bool MonthBarsModel::isNamed(QDate date) const {
  if (date == today_) return true;
  const bool isRound = date.day() == 1 || date.day() % 5 == 0;
  return isRound && (!today_.isValid() || std::abs(date.daysTo(today_)) > 1);
}

std::size_t MonthBarsModel::countOf(int day) const {
  return counts_[static_cast<std::size_t>(day - 1)];
}

void MonthBarsModel::show(const MonthOverview& overview, QDate today) {
  const QDate first(overview.year, static_cast<int>(overview.month), 1);
  std::vector<std::size_t> counts(static_cast<std::size_t>(first.daysInMonth()), 0);
  for (const auto& [day, count] : overview.dailyCounts) counts[day - 1] = count;
  const bool isSameLength = counts.size() == counts_.size();
  if (!isSameLength) beginResetModel();
  counts_ = std::move(counts);
  most_ = std::max<std::size_t>(1, std::ranges::max(counts_));
  year_ = overview.year;
  month_ = static_cast<int>(overview.month);
  today_ = today;
  if (!isSameLength)
    endResetModel();
  else
    emit dataChanged(index(0), index(rowCount() - 1));
}

int ThreadsModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QHash<int, QByteArray> ThreadsModel::roleNames() const {
  return {{IsThread, "isThread"}, {Name, "name"},         {Tag, "tag"},
          {Emoji, "emoji"},       {TagColor, "tagColor"}, {Summary, "summary"},
          {DayBits, "dayBits"},   {FirstDay, "firstDay"}, {LastDay, "lastDay"},
          {IsOpen, "isOpen"},     {When, "when"},         {Preview, "preview"}};
}

QVariant ThreadsModel::data(const QModelIndex& index, int role) const {
  if (index.row() < 0 || index.row() >= rowCount()) return {};
  const Row row = rows_[static_cast<std::size_t>(index.row())];
  const TagThread& thread = threads_[row.thread];
  if (role == IsThread) return row.entry < 0;
  return row.entry < 0 ? ofThread(thread, role) : ofEntry(*entryAt(index.row()), role);
}

QVariant ThreadsModel::ofThread(const TagThread& thread, int role) const {
  switch (role) {
    case Name:
      return qt(thread.displayName);
    case Tag:
      return qt(thread.tag);
    case Emoji:
      return lookOf(looks_.emojis, thread.tag);
    case TagColor:
      return lookOf(looks_.colors, thread.tag);
    case Summary:
      return tr("%1 天 · %2 条").arg(thread.days.size()).arg(thread.count);
    case DayBits: {
      unsigned bits = 0;
      for (const unsigned day : thread.days) bits |= 1U << (day - 1);
      return static_cast<int>(bits);
    }
    case FirstDay:
      return thread.firstDay;
    case LastDay:
      return thread.lastDay;
    case IsOpen:
      return open_.contains(thread.tag);
    default:
      return {};
  }
}

QVariant ThreadsModel::ofEntry(const ThreadEntry& entry, int role) {
  if (role == When) return whenText(entry.day, entry.time);
  if (role == Preview) return qt(entry.preview);
  return {};
}

const ThreadEntry* ThreadsModel::entryAt(int row) const {
  if (row < 0 || row >= rowCount()) return nullptr;
  const Row found = rows_[static_cast<std::size_t>(row)];
  return found.entry < 0 ? nullptr
                         : &threads_[found.thread].entries[static_cast<std::size_t>(found.entry)];
}

void ThreadsModel::layOut() {
  rows_.clear();
  for (std::size_t i = 0; i < threads_.size(); ++i) {
    rows_.push_back({i});
    if (!open_.contains(threads_[i].tag)) continue;
    for (std::size_t entry = 0; entry < threads_[i].entries.size(); ++entry)
      rows_.push_back({i, static_cast<int>(entry)});
  }
}

void ThreadsModel::show(std::vector<TagThread> threads) {
  if (threads == threads_) return;  // a press on a row that is made anew would be lost
  beginResetModel();
  threads_ = std::move(threads);
  layOut();
  endResetModel();
  emit countChanged();
}

void ThreadsModel::setLooks(const TagConfig& looks) {
  looks_ = looks;
  if (!rows_.empty()) emit dataChanged(index(0), index(rowCount() - 1), {Emoji, TagColor});
}

void ThreadsModel::toggle(int row) {
  if (row < 0 || row >= rowCount() || entryAt(row)) return;
  const TagThread& thread = threads_[rows_[static_cast<std::size_t>(row)].thread];
  const auto entries = static_cast<int>(thread.entries.size());
  if (open_.erase(thread.tag) > 0) {
    beginRemoveRows({}, row + 1, row + entries);
    layOut();
    endRemoveRows();
  } else {
    open_.insert(thread.tag);
    beginInsertRows({}, row + 1, row + entries);
    layOut();
    endInsertRows();
  }
  emit dataChanged(index(row), index(row), {IsOpen});
  emit countChanged();
}

int AnomaliesModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(anomalies_.size());
}

QHash<int, QByteArray> AnomaliesModel::roleNames() const {
  return {{Reason, "reason"}, {When, "when"}, {Preview, "preview"}};
}

QVariant AnomaliesModel::data(const QModelIndex& index, int role) const {
  const OverviewAnomaly* anomaly = at(index.row());
  if (!anomaly) return {};
  if (role == Reason) return qt(anomaly->label);
  if (role == When) return whenText(anomaly->day, anomaly->time);
  if (role == Preview) return qt(anomaly->preview);
  return {};
}

void AnomaliesModel::show(std::vector<OverviewAnomaly> anomalies) {
  const auto isSame = [](const OverviewAnomaly& left, const OverviewAnomaly& right) {
    const auto all = [](const OverviewAnomaly& anomaly) {
      return std::tie(anomaly.kind, anomaly.date, anomaly.time, anomaly.seqNumber, anomaly.label,
                      anomaly.preview);
    };
    return all(left) == all(right);
  };
  if (std::ranges::equal(anomalies, anomalies_, isSame)) return;
  beginResetModel();
  anomalies_ = std::move(anomalies);
  endResetModel();
  emit countChanged();
}

const OverviewAnomaly* AnomaliesModel::at(int row) const {
  return row >= 0 && row < rowCount() ? &anomalies_[static_cast<std::size_t>(row)] : nullptr;
}

}  // namespace nomely
