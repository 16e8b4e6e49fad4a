#pragma once

#include <QDate>
#include <QObject>
#include <QTimer>
#include <optional>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "Core/Storage/MemoPlace.h"
#include "Desktop/Base/BackgroundWork.h"
#include "Desktop/Base/ScreenContext.h"
#include "Desktop/Models/MemoHandle.h"
#include "Desktop/Models/MonthInView.h"
#include "Desktop/Models/TimelineModel.h"
#include "Desktop/Screens/EmptyText.h"
#include "Platform/Concurrency/Subscription.h"

namespace nomely {

class DayViewModel;

// The timeline's page: which list it shows, and what a user does with its cards. Main thread.
class TimelineScreen : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the window")
  Q_PROPERTY(nomely::TimelineModel* model READ model CONSTANT)
  Q_PROPERTY(List list READ list NOTIFY listChanged)
  Q_PROPERTY(QString tag READ tag NOTIFY listChanged)
  Q_PROPERTY(QString query READ query NOTIFY listChanged)
  Q_PROPERTY(QDate day READ day NOTIFY listChanged)
  Q_PROPERTY(QString title READ title NOTIFY listChanged)
  Q_PROPERTY(QString counts READ counts NOTIFY countsChanged)
  Q_PROPERTY(bool isLoading READ isLoading NOTIFY loadingChanged)
  Q_PROPERTY(bool isEmpty READ isEmpty NOTIFY countsChanged)
  Q_PROPERTY(nomely::EmptyText emptyText READ emptyText NOTIFY listChanged)
  // The month from which the day for a memo is chosen.
  Q_PROPERTY(nomely::MonthInView* moveMonth READ moveMonth CONSTANT)
  Q_PROPERTY(QDate dayInView READ dayInView NOTIFY inViewChanged)
  Q_PROPERTY(QString sectionInView READ sectionInView NOTIFY inViewChanged)
  Q_PROPERTY(QString sectionNoteInView READ sectionNoteInView NOTIFY inViewChanged)

 public:
  enum List {
    Today,
    DayList,
    All,
    Pinned,
    OnThisDay,
    Tag,
    Untagged,
    Images,
    Links,
    Audio,
    Attachments,
    Search
  };
  Q_ENUM(List)

  explicit TimelineScreen(const ScreenContext& context);
  ~TimelineScreen() override;

  [[nodiscard]] TimelineModel* model() { return &model_; }
  [[nodiscard]] List list() const { return list_; }
  [[nodiscard]] QString tag() const { return tag_; }
  [[nodiscard]] QString query() const { return query_; }
  [[nodiscard]] QDate day() const;
  [[nodiscard]] QString title() const;
  [[nodiscard]] QString counts() const;
  [[nodiscard]] bool isLoading() const;
  [[nodiscard]] bool isEmpty() const;
  [[nodiscard]] EmptyText emptyText() const;
  // What is pinned stands above the days: while it is in view, that is today.
  [[nodiscard]] QDate dayInView() const;
  [[nodiscard]] QString sectionInView() const { return model_.sectionOf(rowInView_); }
  [[nodiscard]] QString sectionNoteInView() const { return model_.sectionNoteOf(rowInView_); }
  // Tells which row stands at the top of the view.
  Q_INVOKABLE void lookAt(int row);

  // Each shows another list.
  Q_INVOKABLE void showAll();
  Q_INVOKABLE void showToday();
  Q_INVOKABLE void showDay(QDate day);
  Q_INVOKABLE void showPinned();
  Q_INVOKABLE void showOnThisDay();
  Q_INVOKABLE void showTag(const QString& tag);
  Q_INVOKABLE void showUntagged();
  Q_INVOKABLE void showImages();
  Q_INVOKABLE void showLinks();
  Q_INVOKABLE void showAudio();
  Q_INVOKABLE void showAttachments();
  // Searches off the main thread; the list before stays until the results come.
  Q_INVOKABLE void showSearch(const QString& query);
  // The same from a search.
  void revealFound(QDate day, int seqNumber);
  // Back to the list and the place where one was before a search; nothing when another list was
  // chosen since.
  Q_INVOKABLE void leaveSearch();
  // The day of a memo, with its card in view.
  Q_INVOKABLE void reveal(QDate day, int seqNumber);
  // Brings a memo that was just written into view, once the list has it; nothing where that is a
  // list of others.
  void follow(QDate day, int seqNumber);
  Q_INVOKABLE void stepDay(int days);
  Q_INVOKABLE void loadMore();

  // What a card does.
  Q_INVOKABLE void togglePinned(const nomely::MemoHandle& memo);
  Q_INVOKABLE void toggleLocked(const nomely::MemoHandle& memo);
  Q_INVOKABLE void remove(const nomely::MemoHandle& memo);
  void move(const nomely::MemoHandle& memo, QDate to);
  // The same with the day that is chosen in moveMonth.
  Q_INVOKABLE void beginMoving(const nomely::MemoHandle& memo);
  [[nodiscard]] MonthInView* moveMonth() { return &moveMonth_; }
  Q_INVOKABLE void undoDelete();

  // Unfolds or folds a card.
  Q_INVOKABLE void toggleExpanded(const nomely::MemoHandle& memo);

  // Does what the text of an empty list offers.
  Q_INVOKABLE void followEmptyText();
  // The number of a row in a list that is counted, 1 for the oldest or for the newest.
  Q_INVOKABLE int seriesNumber(int row, bool ascending) const {
    return ascending ? static_cast<int>(memoCount_) - row : row + 1;
  }

  // To be called when the window is shown again: other programs may have written meanwhile.
  void refresh();

 signals:
  void listChanged();
  void countsChanged();
  void loadingChanged();
  void inViewChanged();
  // Notes were saved, moved or deleted here.
  void changed();
  // Ask the view for the input, or for a file to put into it.
  void inputAsked();
  void fileAsked();
  // Asks the view to bring that row to the top.
  void revealed(int row);
  // Asks it to show that row, wherever in the view, and nothing more.
  void followed(int row);

 private:
  // Where a search began.
  struct Place {
    List list = All;
    QString tag;
    QDate day;
    std::optional<MemoPlace> atTop;  // the memo in view
  };
  [[nodiscard]] Place here() const;
  void show(const Place& place);
  void choose(List list, const QString& tag = {}, const QString& query = {});
  void showRows();
  void countAll();
  void revealAsked();
  void followAsked();
  [[nodiscard]] int rowOf(const MemoPlace& place) const;
  [[nodiscard]] QString dayTitle() const;

  const ScreenContext context_;
  DayViewModel& timeline_;
  TimelineModel model_;
  List list_ = All;
  QString tag_;
  QString query_;
  std::optional<Place> beforeSearch_;
  int rowInView_ = -1;
  int choices_ = 0;          // what is found for a list that was left meanwhile isn't shown
  bool isOtherList_ = true;  // the rows in the model are of the list before
  std::optional<MemoPlace> toReveal_;
  std::optional<MemoPlace> toFollow_;
  std::size_t memoCount_ = 0;
  std::size_t dayCount_ = 0;
  MonthInView moveMonth_;
  MemoHandle moving_;
  QTimer midnight_;
  std::vector<Subscription> subscriptions_;
  BackgroundWork work_;
};

}  // namespace nomely
