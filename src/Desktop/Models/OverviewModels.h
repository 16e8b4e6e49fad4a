#pragma once

#include <QAbstractListModel>
#include <QDate>
#include <QString>
#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "Browser/MonthOverview.h"
#include "Core/Storage/TagConfig.h"

namespace nomely {

// The days of a month with their counts, as bars. Main thread.
class MonthBarsModel : public QAbstractListModel {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the overview's screen")

 public:
  // Height is the share of the month's fullest day; named are the first, each fifth and today.
  enum Role { DayNumber = Qt::UserRole + 1, Count, Height, Shade, IsToday, IsRest, IsNamed, Label };

  explicit MonthBarsModel(QObject* parent = nullptr) : QAbstractListModel(parent) {}

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

  void show(const MonthOverview& overview, QDate today);

 private:
  [[nodiscard]] bool isNamed(QDate date) const;
  [[nodiscard]] std::size_t countOf(int day) const;

  int year_ = 1;
  int month_ = 1;
  QDate today_;
  std::vector<std::size_t> counts_;  // by day of the month, from the first
  std::size_t most_ = 1;
};

// The month's threads, each followed by its entries while it is unfolded. Main thread.
class ThreadsModel : public QAbstractListModel {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the overview's screen")
  Q_PROPERTY(int count READ rowCount NOTIFY countChanged)

 public:
  // DayBits has bit n set for the (n+1)th of the month.
  enum Role {
    IsThread = Qt::UserRole + 1,
    Name,
    Tag,
    Emoji,
    TagColor,
    Summary,
    DayBits,
    FirstDay,
    LastDay,
    IsOpen,
    When,
    Preview
  };

  explicit ThreadsModel(QObject* parent = nullptr) : QAbstractListModel(parent) {}

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

  // What was unfolded stays so.
  void show(std::vector<TagThread> threads);
  void setLooks(const TagConfig& looks);
  Q_INVOKABLE void toggle(int row);

  // The memo of an entry's row; null for a thread's.
  [[nodiscard]] const ThreadEntry* entryAt(int row) const;

 signals:
  void countChanged();

 private:
  struct Row {
    std::size_t thread = 0;
    int entry = -1;  // -1: the thread itself
  };
  void layOut();
  [[nodiscard]] QVariant ofThread(const TagThread& thread, int role) const;
  [[nodiscard]] static QVariant ofEntry(const ThreadEntry& entry, int role);

  std::vector<TagThread> threads_;
  std::vector<Row> rows_;
  std::set<std::string> open_;  // tags
  TagConfig looks_;
};

// Memos that look wrong. Main thread.
class AnomaliesModel : public QAbstractListModel {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the overview's screen")
  Q_PROPERTY(int count READ rowCount NOTIFY countChanged)

 public:
  enum Role { Reason = Qt::UserRole + 1, When, Preview };

  explicit AnomaliesModel(QObject* parent = nullptr) : QAbstractListModel(parent) {}

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

  void show(std::vector<OverviewAnomaly> anomalies);
  [[nodiscard]] const OverviewAnomaly* at(int row) const;

 signals:
  void countChanged();

 private:
  std::vector<OverviewAnomaly> anomalies_;
};

}  // namespace nomely
