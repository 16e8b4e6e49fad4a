#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <chrono>
#include <cstddef>
#include <string>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Base/BackgroundWork.h"
#include "Desktop/Base/ScreenContext.h"
#include "Desktop/Models/SearchResultsModel.h"

namespace nomely {

class TimelineScreen;

// A search as one types. Results of a text stay until those of the next are there; an answer that
// was overtaken is dropped. Main thread.
class SearchScreen : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the window")
  Q_PROPERTY(nomely::SearchResultsModel* results READ results CONSTANT)
  Q_PROPERTY(QString query READ query WRITE setQuery NOTIFY queryChanged)
  // The row that the keys have chosen; -1: none.
  Q_PROPERTY(int current READ current WRITE setCurrent NOTIFY currentChanged)
  Q_PROPERTY(bool hasWords READ hasWords NOTIFY queryChanged)
  // An answer is there, and it is empty.
  Q_PROPERTY(bool foundNothing READ foundNothing NOTIFY answered)
  Q_PROPERTY(QString nothingText READ nothingText NOTIFY answered)
  // What was found is in the timeline: the text stays, so that one can come back to the results.
  Q_PROPERTY(bool isShown READ isShown NOTIFY shownChanged)
  // The answer takes its time.
  Q_PROPERTY(bool isSlow READ isSlow NOTIFY slowChanged)

 public:
  // Shows at most `limit` results. `timeline` must outlive this.
  SearchScreen(const ScreenContext& context, TimelineScreen& timeline, std::size_t limit);
  ~SearchScreen() override;

  [[nodiscard]] SearchResultsModel* results() { return &results_; }
  [[nodiscard]] QString query() const { return query_; }
  void setQuery(const QString& query);
  [[nodiscard]] int current() const { return current_; }
  void setCurrent(int row);
  [[nodiscard]] bool hasWords() const;
  [[nodiscard]] bool foundNothing() const;
  [[nodiscard]] QString nothingText() const;
  [[nodiscard]] bool isShown() const { return isShown_; }
  [[nodiscard]] bool isSlow() const { return isSlow_; }

  Q_INVOKABLE void moveCurrent(int step);
  // Opens the chosen row; without one, shows all results in the timeline.
  Q_INVOKABLE void accept();
  Q_INVOKABLE void open(int row);
  Q_INVOKABLE void showAll();
  // Forgets the text; back to the list that was there before its results were shown.
  Q_INVOKABLE void leave();

 signals:
  void queryChanged();
  void currentChanged();
  void answered();
  void slowChanged();
  void shownChanged();
  // A row or all results were opened.
  void opened();

 private:
  void search();
  void show(std::vector<SearchResult>&& found, const std::string& words);
  void setSlow(bool isSlow);
  void setShown(bool isShown);
  void followTimeline();
  [[nodiscard]] std::string words() const;

  const ScreenContext context_;
  TimelineScreen& timeline_;
  std::size_t limit_;
  SearchResultsModel results_;
  QString query_;
  std::string answered_;  // the words whose results are shown
  int current_ = -1;
  bool isShown_ = false;
  bool isOpening_ = false;
  bool isSearching_ = false;
  bool isSlow_ = false;
  std::chrono::milliseconds lastTook_{0};
  QTimer pause_;
  QTimer patience_;
  BackgroundWork work_;
};

}  // namespace nomely
