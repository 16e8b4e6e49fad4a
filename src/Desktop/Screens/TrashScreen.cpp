#include "Desktop/Screens/TrashScreen.h"

#include <algorithm>
#include <utility>

#include "App/Application.h"
#include "App/TrashErasing.h"
#include "Desktop/Base/Qt.h"
#include "Desktop/Screens/BannerScreen.h"
#include "Editor/Timeline/DayViewModel.h"

namespace nomely {
namespace {

constexpr int largestStep = 200;  // of a backup's share: what a bar can show

// Where restored memos stand by now, but for those that have changed since.
std::vector<TimelineEntry> placesOf(const std::vector<TrashEntry>& restored, const DayStore& days) {
  std::vector<TimelineEntry> places;
  for (const TrashEntry& entry : restored)
    for (const Memo& memo : days.listMemos(entry.originalDate))
      if (memo.memoId == entry.memo.memoId && memo.body == entry.memo.body &&
          (memo.memoId || memo.seqNumber == entry.memo.seqNumber))
        places.push_back({entry.originalDate, memo});
  return places;
}

std::optional<Day> dayIn(const QString& text) {
  const QDate date = QDate::fromString(text.trimmed(), QStringLiteral("yyyy-M-d"));
  if (!date.isValid() || date.year() < 1 || date.year() > 9999) return std::nullopt;
  return dayOf(date);
}

}  // namespace

TrashScreen::TrashScreen(const ScreenContext& context, BannerScreen& banner)
    : context_(context),
      banner_(banner),
      timeline_(context.application.dayViewModel()),
      work_(context.executor, context.jobs) {
  const auto tellBusy = [this](bool) { emit busyChanged(); };
  subscriptions_.push_back(
      timeline_.trashEntries.observe([this](const Entries&) { showEntries(); }));
  subscriptions_.push_back(timeline_.isLoadingTrash.observe(tellBusy));
  subscriptions_.push_back(timeline_.isPerformingTrashOperation.observe(tellBusy));
}

TrashScreen::~TrashScreen() {
  lifetime_.end();
  if (backup_) backup_->stop.request_stop();
}

bool TrashScreen::isLoading() const {
  return timeline_.isLoadingTrash.get();
}

bool TrashScreen::isBusy() const {
  return timeline_.isPerformingTrashOperation.get();
}

void TrashScreen::open() {
  timeline_.loadTrash();
}

void TrashScreen::showEntries() {
  model_.show(timeline_.trashEntries.get(), context_.clock.today());
  tellRestored();
  emit daysChanged();
}

void TrashScreen::restore(int row) {
  restore(model_.entriesAt(row));
}

void TrashScreen::restoreChecked() {
  restore(model_.checkedEntries());
}

void TrashScreen::restore(const Entries& entries) {
  restoring_.insert(restoring_.end(), entries.begin(), entries.end());
  timeline_.batchRestoreTrash(entries);
}

// What has gone from the trash is back in its day; the rest is told of as a failure.
void TrashScreen::tellRestored() {
  Entries restored = std::exchange(restoring_, {});
  std::erase_if(restored, [this](const TrashEntry& entry) {
    const Entries& left = timeline_.trashEntries.get();
    const bool isLeft =
        std::ranges::find(left, entry.trashSubdir, &TrashEntry::trashSubdir) != left.end();
    if (isLeft) restoring_.push_back(entry);
    return isLeft;
  });
  if (restored.empty()) return;
  banner_.offer(tr("已恢复 %1 条").arg(restored.size()), tr("撤销"), [this, restored] {
    work_.run([restored, days = context_.application.dayStore()](
                  const std::stop_token&) { return placesOf(restored, days); },
              [this](const std::vector<TimelineEntry>& places) { timeline_.deleteMemos(places); });
  });
}

void TrashScreen::remove(int row) {
  const Entries entries = model_.entriesAt(row);
  if (!entries.empty()) remove(entries, tr("永久删除这条笔记？"), TrashErasing::warning(1));
}

void TrashScreen::removeChecked() {
  const Entries entries = model_.checkedEntries();
  if (!entries.empty())
    remove(entries, tr("永久删除选中的笔记？"), TrashErasing::warning(entries.size()));
}

void TrashScreen::removeBetween(const QString& first, const QString& last) {
  const Entries entries = between(first, last);
  if (entries.empty())
    banner_.succeed(qt(TrashErasing::nothingBetween));
  else
    remove(entries, tr("按日期范围删除"), TrashErasing::warningBetween);
}

void TrashScreen::remove(const Entries& entries, const QString& title, const std::string& warning) {
  ask({.title = title, .text = qt(warning), .confirmText = tr("永久删除")}, [this, entries] {
    backUpAndErase(
        {TrashErasing::deleting, [this, entries] { timeline_.batchDeleteTrash(entries); }});
  });
}

// Counts what lies there at this moment, with what the list doesn't show.
void TrashScreen::empty() {
  work_.run([memos = context_.application.memos()](
                const std::stop_token&) { return memos.trashContents(); },
            [this](const TrashContents& contents) {
              if (TrashErasing::isEmpty(contents)) return banner_.succeed(tr("回收站是空的"));
              ask({.title = qt(TrashErasing::emptyingQuestion),
                   .text = qt(TrashErasing::emptyingWarning(contents)),
                   .confirmText = tr("清空")},
                  [this] {
                    backUpAndErase({TrashErasing::emptying, [this] { timeline_.emptyTrash(); }});
                  });
            },
            [this](const std::string& failure) {
              banner_.fail(qt(failure), tr("重试"), [this] { empty(); });
            });
}

TrashScreen::Entries TrashScreen::between(const QString& first, const QString& last) const {
  const std::optional<Day> from = dayIn(first);
  const std::optional<Day> to = dayIn(last);
  if (!from || !to) return {};
  return TrashErasing::between(timeline_.trashEntries.get(), std::min(*from, *to),
                               std::max(*from, *to));
}

QString TrashScreen::countBetween(const QString& first, const QString& last) const {
  const Entries entries = between(first, last);
  return entries.empty() ? qt(TrashErasing::nothingBetween)
                         : tr("这些天共 %1 条笔记").arg(entries.size());
}

QString TrashScreen::firstDay() const {
  const Entries& entries = timeline_.trashEntries.get();
  const auto least = std::ranges::min_element(entries, {}, &TrashEntry::originalDate);
  return least == entries.end() ? QString() : qt(least->originalDate.string());
}

QString TrashScreen::lastDay() const {
  const Entries& entries = timeline_.trashEntries.get();
  const auto most = std::ranges::max_element(entries, {}, &TrashEntry::originalDate);
  return most == entries.end() ? QString() : qt(most->originalDate.string());
}

void TrashScreen::ask(Question question, std::function<void()> accepted) {
  question_ = std::move(question);
  accepted_ = std::move(accepted);
  emit questionChanged();
}

void TrashScreen::accept() {
  const auto accepted = std::exchange(accepted_, nullptr);
  dismiss();
  if (accepted) accepted();
}

void TrashScreen::dismiss() {
  if (!question_.isAsked()) return;
  question_ = {};
  accepted_ = nullptr;
  emit questionChanged();
}

void TrashScreen::backUpAndErase(const Erasing& erasing) {
  if (backup_) return;
  backup_ = Backup{};
  emit backupChanged();
  const std::stop_source stop = backup_->stop;
  const auto progress = [&executor = context_.executor, stop, shown = -1,
                         show = lifetime_.guard([this, stop](double share) {
                           if (!stop.stop_requested()) showShare(share);
                         })](double share) mutable {
    if (std::exchange(shown, static_cast<int>(share * largestStep)) ==
        static_cast<int>(share * largestStep))
      return;
    executor.post([show, share] { show(share); });
  };
  const auto end = [this, stop] {
    if (stop.stop_requested()) return false;
    backup_.reset();
    emit backupChanged();
    return true;
  };
  work_.run(
      [&application = context_.application, &operation = erasing.operation, stop,
       progress](const std::stop_token& ending) {
        const std::stop_callback ends(ending, [stop]() mutable { stop.request_stop(); });
        application.backupBeforeRiskyOperation(operation,
                                               {.stop = stop.get_token(), .progress = progress});
      },
      [end, run = erasing.run] {
        if (end()) run();
      },
      [this, end, run = erasing.run](const std::string& failure) {
        if (end())
          ask({.title = tr("没有备份成"),
               .text = qt(failure),
               .confirmText = tr("不备份，继续删除")},
              run);
      });
}

void TrashScreen::stopBackup() {
  if (!backup_) return;
  backup_->stop.request_stop();
  backup_.reset();
  emit backupChanged();
}

void TrashScreen::showShare(double share) {
  if (!backup_) return;
  backup_->share = share;
  emit backupChanged();
}

}  // namespace nomely
