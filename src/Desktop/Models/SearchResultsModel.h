#pragma once

#include <QAbstractListModel>
#include <QColor>
#include <QDate>
#include <string>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "Core/Query/SearchResult.h"
#include "Platform/Time/ChineseDates.h"

namespace nomely {

// What a search found, newest first. A snippet is styled text with the hits on the colour of
// `mark`. Main thread.
class SearchResultsModel : public QAbstractListModel {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the search's screen")
  Q_PROPERTY(int count READ rowCount NOTIFY countChanged)
  Q_PROPERTY(QColor mark MEMBER mark_ WRITE setMark NOTIFY markChanged)

 public:
  enum Role { Date = Qt::UserRole + 1, DateText, Time, Snippet, PlainSnippet, Tags };

  explicit SearchResultsModel(QObject* parent = nullptr) : QAbstractListModel(parent) {}

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

  void setMark(const QColor& mark);
  void setToday(Day today) { today_ = today; }
  void show(std::vector<SearchResult> results, std::string query);

  [[nodiscard]] const std::vector<SearchResult>& results() const { return results_; }

 signals:
  void countChanged();
  void markChanged();

 private:
  enum class Markup { html, none };

  [[nodiscard]] QString snippet(const SearchResult& result, Markup markup) const;
  [[nodiscard]] QString dateText(Day day) const;

  std::vector<SearchResult> results_;
  std::string query_;
  QColor mark_;
  Day today_{Day({})};
  ChineseDates sameYear_{"M月d日"};
  ChineseDates otherYear_{"yyyy年M月d日"};
};

}  // namespace nomely
