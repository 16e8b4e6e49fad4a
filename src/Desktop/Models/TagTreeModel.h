#pragma once

#include <QAbstractListModel>
#include <QString>
#include <functional>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Models/TagRows.h"

namespace nomely {

// The rows of tags in the sidebar. Rows that stay keep their place in a view, whatever comes and
// goes around them. Main thread.
class TagTreeModel : public QAbstractListModel {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the sidebar's screen")
  Q_PROPERTY(int count READ rowCount NOTIFY countChanged)

 public:
  enum Role {
    IsHeading = Qt::UserRole + 1,
    Tag,
    Label,
    Memos,
    Depth,
    Opens,
    IsOpen,
    IsPinned,
    IsCollection,
    TagColor,
    Emoji
  };

  explicit TagTreeModel(QObject* parent = nullptr) : QAbstractListModel(parent) {}

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

  void show(TagSource source);
  // Changes what the user has set.
  void alter(const std::function<void(TagView&)>& change);

  [[nodiscard]] const TagSource& source() const { return source_; }
  [[nodiscard]] const TagView& view() const { return view_; }

  // Empty for a heading that stands for none.
  [[nodiscard]] QString tagAt(int row) const;
  // Unfolds or folds a row that can be.
  Q_INVOKABLE void toggle(int row);
  // For the keys: Right unfolds a folded row, Left folds an unfolded one; both give the row to go
  // to, which else is the first child or the parent.
  Q_INVOKABLE int rightOf(int row);
  Q_INVOKABLE int leftOf(int row);
  // The next row below (1) or above (-1) that can be chosen; `row` itself when there is none.
  Q_INVOKABLE int next(int row, int step) const;

 signals:
  void countChanged();
  // Rows were folded or unfolded, or tags pinned.
  void viewChanged();

 private:
  void rebuild();
  void update(std::size_t row, const TagRow& now);
  [[nodiscard]] bool canBeChosen(const TagRow& row) const;
  [[nodiscard]] const TagRow* at(int row) const;

  TagSource source_;
  TagView view_;
  std::vector<TagRow> rows_;
};

}  // namespace nomely
