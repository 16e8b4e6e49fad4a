#pragma once

#include <QAbstractListModel>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "Core/Storage/VersionStore.h"
#include "Platform/Time/Day.h"

namespace nomely {

// A memo's earlier versions, newest first, and behind them its files as other programs wrote them.
// Main thread.
class HistoryModel : public QAbstractListModel {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the history's screen")
  Q_PROPERTY(int count READ rowCount NOTIFY countChanged)

 public:
  enum Role { TimeName = Qt::UserRole, Added, Removed, Note, IsOriginal };

  struct Version {
    VersionEntry entry;
    // What became of it in the next newer version, or in the memo as it is.
    std::size_t added = 0;
    std::size_t removed = 0;
    QString note = {};  // what else changed, in a few words
  };
  using Versions = std::vector<Version>;
  using Originals = std::vector<OriginalFile>;

  void show(Versions versions, Originals originals, Day today);

  // Null for a row that is none.
  [[nodiscard]] const VersionEntry* versionAt(int row) const;
  [[nodiscard]] const OriginalFile* originalAt(int row) const;

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

 signals:
  void countChanged();

 private:
  Versions versions_;
  Originals originals_;
  Day today_{Day({})};
};

}  // namespace nomely
