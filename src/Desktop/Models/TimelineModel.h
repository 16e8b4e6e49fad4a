#pragma once

#include <QAbstractListModel>
#include <set>
#include <string>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Models/MemoHandle.h"
#include "Platform/Time/ChineseDates.h"
#include "Platform/Time/Day.h"

namespace nomely {

// The rows of the timeline with their headings. A row keeps what a user made of it, such as being
// unfolded, for as long as the program runs. Main thread.
class TimelineModel : public QAbstractListModel {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the timeline's screen")
  Q_PROPERTY(int count READ rowCount NOTIFY countChanged)

 public:
  enum Role { Memo = Qt::UserRole + 1, Heading, HeadingNote, Expanded, Snippet };

  using Entries = std::vector<MemoEntry>;

  // Which headings stand over the cards.
  enum class Headings { days, none };

  explicit TimelineModel(QObject* parent = nullptr);
  ~TimelineModel() override;

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

  // Shows these; rows that stay are kept.
  void show(const Entries& entries);
  // Shows these as another list: no row is taken for one of the list before.
  void reset(const Entries& entries);
  void setHeadings(Headings headings);
  void setToday(Day today);

  [[nodiscard]] const Entries& entries() const { return rows_; }
  // The heading under which a row stands, whether or not it begins there.
  [[nodiscard]] QString sectionOf(int row) const;
  [[nodiscard]] QString sectionNoteOf(int row) const;
  // An empty one where there is none.
  Q_INVOKABLE nomely::MemoHandle at(int row) const;
  // -1 where there is none.
  Q_INVOKABLE int rowOf(const QString& key) const;
  void setExpanded(const QString& key, bool expanded);
  [[nodiscard]] bool isExpanded(const QString& key) const { return expanded_.contains(key); }

 signals:
  void countChanged();

 private:
  [[nodiscard]] bool isOnTop(std::size_t row) const;
  [[nodiscard]] bool beginsSection(std::size_t row) const;
  [[nodiscard]] bool has(int row) const {
    return row >= 0 && static_cast<std::size_t>(row) < rows_.size();
  }
  void tellHeadings();

  Entries rows_;
  std::set<QString> expanded_;  // keys
  Headings headings_ = Headings::days;
  Day today_{std::chrono::sys_days{}};
  ChineseDates sameYear_{"M月d日"};
  ChineseDates otherYear_{"yyyy年M月d日"};
  ChineseDates weekday_{"EEEE"};
};

}  // namespace nomely
