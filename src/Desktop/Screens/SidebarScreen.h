#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <cstdint>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Base/BackgroundWork.h"
#include "Desktop/Base/ScreenContext.h"
#include "Desktop/Models/CalendarModel.h"
#include "Desktop/Models/DiaryChanges.h"
#include "Desktop/Models/TagStyles.h"
#include "Desktop/Models/TagTreeModel.h"
#include "Platform/Concurrency/Subscription.h"

namespace nomely {

class TimelineScreen;

// The sidebar: the month, the lists with their counts, the tags. It is filled once the timeline
// shows its first notes, and again after each change of notes. Main thread.
class SidebarScreen : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the window")
  Q_PROPERTY(nomely::CalendarModel* calendar READ calendar CONSTANT)
  Q_PROPERTY(nomely::TagTreeModel* tags READ tags CONSTANT)
  Q_PROPERTY(nomely::TagStyles tagStyles READ tagStyles NOTIFY tagStylesChanged)
  // As texts; empty while they are not known.
  Q_PROPERTY(QString allCount READ allCount NOTIFY countsChanged)
  Q_PROPERTY(QString todayCount READ todayCount NOTIFY countsChanged)
  Q_PROPERTY(QString pinnedCount READ pinnedCount NOTIFY countsChanged)
  Q_PROPERTY(QString onThisDayCount READ onThisDayCount NOTIFY countsChanged)
  Q_PROPERTY(bool hasOnThisDay READ hasOnThisDay NOTIFY onThisDayChanged)

 public:
  // `timeline` must outlive this.
  SidebarScreen(const ScreenContext& context, TimelineScreen& timeline);
  ~SidebarScreen() override;

  [[nodiscard]] CalendarModel* calendar() { return &calendar_; }
  [[nodiscard]] TagTreeModel* tags() { return &tags_; }
  [[nodiscard]] const TagStyles& tagStyles() const { return tagStyles_; }
  [[nodiscard]] QString allCount() const { return text(counts_.all); }
  [[nodiscard]] QString todayCount() const { return text(counts_.today); }
  [[nodiscard]] QString pinnedCount() const { return text(counts_.pinned); }
  [[nodiscard]] QString onThisDayCount() const { return text(counts_.onThisDay); }
  [[nodiscard]] bool hasOnThisDay() const;

  // Shows the notes of a tag's row, or unfolds a heading; returns whether notes are shown.
  Q_INVOKABLE bool openRow(int row);
  // The day of a cell of the calendar, in the timeline; nothing outside the month.
  Q_INVOKABLE void showCell(int cell);

  // How a tag looks. An empty colour or emoji takes it away.
  Q_INVOKABLE void setColor(const QString& tag, const QString& color);
  Q_INVOKABLE void setEmoji(const QString& tag, const QString& emoji);
  // Whether this can be a tag's emoji.
  Q_INVOKABLE static bool isEmoji(const QString& text);
  Q_INVOKABLE void togglePinned(const QString& tag);

  // A tag has another name, or none any more (`to` empty): how it looks and stands follows.
  // Returns what takes that back.
  std::function<void()> follow(const QString& from, const QString& to);

 signals:
  void tagStylesChanged();
  void countsChanged();
  void onThisDayChanged();

 private:
  struct Counts {
    std::int64_t all = -1;
    std::int64_t today = -1;
    std::int64_t pinned = -1;
    std::int64_t onThisDay = -1;

    friend bool operator==(const Counts&, const Counts&) = default;
  };
  struct Contents {
    Counts counts;
    TagSource tags;
  };

  [[nodiscard]] static Contents contentsOf(Application& application, Day today);
  [[nodiscard]] static QString text(std::int64_t count);
  void refresh();
  void read();
  void checkDay();
  void followTimeline();
  void loadView();
  void saveView();
  void changeLooks(const std::function<void(TagConfig&)>& change);

  const ScreenContext context_;
  TimelineScreen& timeline_;
  CalendarModel calendar_;
  TagTreeModel tags_;
  TagStyles tagStyles_;
  Counts counts_;
  Day today_;
  bool isReading_ = false;
  bool hasToReadAgain_ = false;
  bool isSaving_ = false;
  bool hasToSaveAgain_ = false;
  QTimer dayCheck_;
  Subscription looks_;
  Subscription onThisDay_;
  Subscription firstLoad_;
  DiaryChanges changes_;
  BackgroundWork work_;
};

}  // namespace nomely
