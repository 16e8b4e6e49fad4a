#pragma once

#include <QDate>
#include <QObject>
#include <QString>
#include <chrono>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Base/BackgroundWork.h"
#include "Desktop/Base/ScreenContext.h"
#include "Desktop/Models/DiaryChanges.h"
#include "Desktop/Models/OverviewModels.h"
#include "Platform/Concurrency/Subscription.h"

namespace nomely {

class TimelineScreen;

// A month on one page: how much was written each day, which topics ran through it, what looks
// wrong. It is made when the page is first shown, and while it stands after each change of notes.
// Main thread.
class OverviewScreen : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the window")
  Q_PROPERTY(nomely::MonthBarsModel* bars READ bars CONSTANT)
  Q_PROPERTY(nomely::ThreadsModel* threads READ threads CONSTANT)
  Q_PROPERTY(nomely::AnomaliesModel* anomalies READ anomalies CONSTANT)
  Q_PROPERTY(QString title READ title NOTIFY monthChanged)
  Q_PROPERTY(bool isThisMonth READ isThisMonth NOTIFY monthChanged)
  Q_PROPERTY(int dayCount READ dayCount NOTIFY monthChanged)
  // The figures, as texts.
  Q_PROPERTY(QString memos READ memos NOTIFY changed)
  Q_PROPERTY(QString days READ days NOTIFY changed)
  Q_PROPERTY(QString words READ words NOTIFY changed)
  Q_PROPERTY(QString attachments READ attachments NOTIFY changed)
  Q_PROPERTY(QString audio READ audio NOTIFY changed)
  // The present month's answer is there.
  Q_PROPERTY(bool isReady READ isReady NOTIFY changed)
  Q_PROPERTY(bool isEmpty READ isEmpty NOTIFY changed)

 public:
  // `timeline` must outlive this.
  OverviewScreen(const ScreenContext& context, TimelineScreen& timeline);
  ~OverviewScreen() override;

  [[nodiscard]] MonthBarsModel* bars() { return &bars_; }
  [[nodiscard]] ThreadsModel* threads() { return &threads_; }
  [[nodiscard]] AnomaliesModel* anomalies() { return &anomalies_; }
  [[nodiscard]] QString title() const;
  [[nodiscard]] bool isThisMonth() const;
  [[nodiscard]] int dayCount() const;
  [[nodiscard]] QString memos() const { return number(overview_.totalMemos); }
  [[nodiscard]] QString days() const { return number(overview_.totalDays); }
  [[nodiscard]] QString words() const { return number(overview_.totalWords); }
  [[nodiscard]] QString attachments() const { return number(overview_.totalAttachments); }
  [[nodiscard]] QString audio() const { return number(overview_.audioAttachments); }
  [[nodiscard]] bool isReady() const { return isReady_; }
  [[nodiscard]] bool isEmpty() const { return isReady_ && overview_.totalMemos == 0; }

  Q_INVOKABLE void step(int months);
  Q_INVOKABLE void showThisMonth();
  // In the timeline: a day of the month; the memo of a thread's entry, or of an anomaly.
  Q_INVOKABLE void openDay(int day);
  Q_INVOKABLE void openEntry(int row);
  Q_INVOKABLE void openAnomaly(int row);

 signals:
  void monthChanged();
  void changed();

 private:
  void show(std::chrono::year_month month);
  void compute();
  void take(MonthOverview&& overview);
  void reveal(Day day, std::int64_t seqNumber);
  [[nodiscard]] bool isShown() const;
  [[nodiscard]] static QString number(std::size_t count);

  const ScreenContext context_;
  TimelineScreen& timeline_;
  MonthBarsModel bars_;
  ThreadsModel threads_;
  AnomaliesModel anomalies_;
  std::chrono::year_month month_;
  MonthOverview overview_;
  bool isReady_ = false;
  bool isOutdated_ = true;
  bool isComputing_ = false;
  Subscription looks_;
  DiaryChanges changes_;
  BackgroundWork work_;
};

}  // namespace nomely
