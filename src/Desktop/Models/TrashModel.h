#pragma once

#include <QAbstractListModel>
#include <set>
#include <string>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "Core/Storage/TrashStore.h"

namespace nomely {

// The memos in the trash, and which of them are checked. Main thread.
class TrashModel : public QAbstractListModel {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the trash's screen")
  Q_PROPERTY(int count READ count NOTIFY countChanged)
  Q_PROPERTY(int checkedCount READ checkedCount NOTIFY checkedChanged)
  Q_PROPERTY(bool areAllChecked READ areAllChecked NOTIFY checkedChanged)

 public:
  enum Role { DateName = Qt::UserRole, Preview, Body, AttachmentNames, IsChecked };
  using Entries = std::vector<TrashEntry>;

  // Rows that stay keep their place on the screen, and their check.
  void show(const Entries& entries, Day today);

  [[nodiscard]] int count() const { return static_cast<int>(entries_.size()); }
  [[nodiscard]] int checkedCount() const { return static_cast<int>(checked_.size()); }
  [[nodiscard]] bool areAllChecked() const { return count() > 0 && checkedCount() == count(); }
  // In the list's order.
  [[nodiscard]] Entries checkedEntries() const;
  // None for a row that isn't there.
  [[nodiscard]] Entries entriesAt(int row) const;

  Q_INVOKABLE void toggle(int row);
  // Gives the rows from the last one that was toggled to `row` what that was given.
  Q_INVOKABLE void toggleTo(int row);
  Q_INVOKABLE void checkAll(bool isChecked);

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

 signals:
  void countChanged();
  void checkedChanged();

 private:
  void set(int first, int last, bool isChecked);

  Entries entries_;
  std::set<std::string> checked_;  // by trashSubdir
  std::string lastToggled_;
  Day today_{Day({})};
};

}  // namespace nomely
