#pragma once

#include <QAbstractListModel>
#include <QDate>
#include <QString>
#include <chrono>
#include <cstddef>
#include <map>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Base/BackgroundWork.h"
#include "Desktop/Base/ScreenContext.h"
#include "Platform/Time/ChineseDates.h"
#include "Platform/Time/Day.h"

namespace nomely {

// A month as six weeks of cells, Monday first, each day with a shade for its count of memos. Counts
// are read off the main thread; a month that was seen before shows those it had until the new ones
// are there. Main thread.
class CalendarModel : public QAbstractListModel {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the sidebar's screen")
  Q_PROPERTY(QString title READ title NOTIFY monthChanged)
  // The cell of the keyboard.
  Q_PROPERTY(int cursor READ cursor WRITE setCursor NOTIFY cursorChanged)

 public:
  // DayNumber is 0 in a cell outside the month.
  enum Role { DayNumber = Qt::UserRole + 1, Shade, Count, IsToday, IsChosen, IsAhead, Label };

  static constexpr int days = 7;
  static constexpr int cells = 6 * days;

  explicit CalendarModel(const ScreenContext& context);

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

  [[nodiscard]] QString title() const;
  [[nodiscard]] int cursor() const { return cellOf(cursor_); }
  void setCursor(int cell);

  Q_INVOKABLE void moveDays(int count);
  Q_INVOKABLE void moveMonths(int count);
  Q_INVOKABLE void goToToday();
  // The day of a cell; invalid outside the month.
  Q_INVOKABLE QDate dayAt(int cell) const;

  // The day that is shown: it is marked, and its month comes into view. Invalid: none.
  void choose(QDate day);
  void setToday(Day today);
  // Reads the counts anew.
  void refresh();

  // 0 for no memo, 1 to 4 for ever more.
  [[nodiscard]] static int shadeOf(std::size_t count);

 signals:
  void monthChanged();
  void cursorChanged();

 private:
  using Month = std::chrono::year_month;
  using Counts = std::map<unsigned, std::size_t>;

  void show(Day cursor);
  void read();
  [[nodiscard]] Day firstCell() const;
  [[nodiscard]] int cellOf(Day day) const;
  [[nodiscard]] std::size_t countOf(Day day) const;
  void tell(const QList<int>& roles = {});

  const ScreenContext context_;
  Month month_;
  Day today_;
  Day cursor_;
  QDate chosen_;
  std::map<Month, Counts> counts_;  // of the months seen
  ChineseDates spoken_{"M月d日"};
  BackgroundWork work_;
};

}  // namespace nomely
