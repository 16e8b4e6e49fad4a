#include "Desktop/Screens/OverviewScreen.h"

#include <QLocale>
#include <utility>

#include "App/Application.h"
#include "Browser/MonthMemos.h"
#include "Browser/MonthOverviewStore.h"
#include "Desktop/Base/Navigation.h"
#include "Desktop/Base/Qt.h"
#include "Desktop/Screens/TimelineScreen.h"

namespace nomely {
namespace {

std::chrono::year_month monthOf(Day day) {
  return {day.civil().year(), day.civil().month()};
}

}  // namespace

OverviewScreen::OverviewScreen(const ScreenContext& context, TimelineScreen& timeline)
    : context_(context),
      timeline_(timeline),
      month_(monthOf(context.clock.today())),
      changes_(context.application, context.executor,
               [this] {
                 isOutdated_ = true;
                 compute();
               }),
      work_(context.executor, context.jobs) {
  const auto takeLooks = [this](const TagConfig& config) { threads_.setLooks(config); };
  looks_ = context.application.tagConfig().config().observe(takeLooks);
  takeLooks(context.application.tagConfig().config().get());
  connect(&context_.navigation, &Navigation::pageChanged, this, &OverviewScreen::compute);
}

OverviewScreen::~OverviewScreen() = default;

QString OverviewScreen::number(std::size_t count) {
  return QLocale(QLocale::Chinese).toString(static_cast<qulonglong>(count));
}

QString OverviewScreen::title() const {
  return tr("%1年%2月")
      .arg(static_cast<int>(month_.year()))
      .arg(static_cast<unsigned>(month_.month()));
}

bool OverviewScreen::isThisMonth() const {
  return month_ == monthOf(context_.clock.today());
}

int OverviewScreen::dayCount() const {
  return static_cast<int>(static_cast<unsigned>((month_ / std::chrono::last).day()));
}

bool OverviewScreen::isShown() const {
  return context_.navigation.page() == Navigation::Overview;
}

void OverviewScreen::step(int months) {
  show(month_ + std::chrono::months(months));
}

void OverviewScreen::showThisMonth() {
  show(monthOf(context_.clock.today()));
}

void OverviewScreen::show(std::chrono::year_month month) {
  if (month == month_ || month.year() < std::chrono::year(1) ||
      month.year() > std::chrono::year(9999))
    return;
  month_ = month;
  isOutdated_ = true;
  emit monthChanged();
  compute();
}

// One at a time: what is asked for meanwhile is computed when that has ended. The page before stays
// until then.
void OverviewScreen::compute() {
  if (!isShown() || !isOutdated_ || isComputing_) return;
  isOutdated_ = false;
  isComputing_ = true;
  work_.run(
      [&index = context_.application.searchIndex(), month = month_](const std::stop_token&) {
        return MonthOverviewStore::compute(static_cast<int>(month.year()),
                                           static_cast<unsigned>(month.month()),
                                           memosOfMonth(month, index));
      },
      [this](MonthOverview&& overview) {
        isComputing_ = false;
        take(std::move(overview));
        compute();
      },
      [this](const std::string& failure) {
        isComputing_ = false;
        context_.navigation.fail(qt(failure));
      });
}

void OverviewScreen::take(MonthOverview&& overview) {
  if (overview.year != static_cast<int>(month_.year()) ||
      overview.month != static_cast<unsigned>(month_.month()))
    return;
  overview_ = std::move(overview);
  isReady_ = true;
  bars_.show(overview_, qtDate(context_.clock.today()));
  threads_.show(overview_.threads);
  anomalies_.show(overview_.anomalies);
  emit changed();
}

void OverviewScreen::openDay(int day) {
  const QDate date(static_cast<int>(month_.year()),
                   static_cast<int>(static_cast<unsigned>(month_.month())), day);
  if (!date.isValid()) return;
  context_.navigation.show(Navigation::Timeline);
  timeline_.showDay(date);
}

void OverviewScreen::openEntry(int row) {
  if (const ThreadEntry* entry = threads_.entryAt(row)) reveal(entry->date, entry->seqNumber);
}

void OverviewScreen::openAnomaly(int row) {
  const OverviewAnomaly* anomaly = anomalies_.at(row);
  if (anomaly && anomaly->date) reveal(*anomaly->date, anomaly->seqNumber);
}

void OverviewScreen::reveal(Day day, std::int64_t seqNumber) {
  context_.navigation.show(Navigation::Timeline);
  timeline_.reveal(qtDate(day), static_cast<int>(seqNumber));
}

}  // namespace nomely
