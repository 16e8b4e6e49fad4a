#pragma once

#include <QAbstractListModel>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Models/MemoHandle.h"
#include "Desktop/Text/BodySegment.h"

namespace nomely {

// The segments of a memo's body, as much of it as its card shows. Rows stay where their segments
// do, so that an edit rebuilds no more of a card than it has to. Main thread.
class BodyBlocks : public QAbstractListModel {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(nomely::MemoHandle memo READ memo WRITE setMemo NOTIFY shownChanged)
  // Shows all of a body, but of one that is too long for a card still its beginning.
  Q_PROPERTY(bool expanded READ isExpanded WRITE setExpanded NOTIFY shownChanged)
  // All of it, however long, for a view that lays out what is looked at alone.
  Q_PROPERTY(bool whole READ isWhole WRITE setWhole NOTIFY shownChanged)
  // Whether the body is longer than a card that isn't expanded.
  Q_PROPERTY(bool collapses READ collapses NOTIFY shownChanged)
  // Whether it is so long that it is opened on a page of its own instead.
  Q_PROPERTY(bool isTooLong READ isTooLong NOTIFY shownChanged)
  Q_PROPERTY(int count READ rowCount NOTIFY shownChanged)

 public:
  enum Kind {
    Run = BodySegment::Run,
    Code = BodySegment::Code,
    Callout = BodySegment::Callout,
    Table = BodySegment::Table,
    Diagram = BodySegment::Diagram,
    Rule = BodySegment::Rule
  };
  Q_ENUM(Kind)
  enum Role { KindRole = Qt::UserRole + 1, Segment, StandsClose };

  using QAbstractListModel::QAbstractListModel;

  [[nodiscard]] const MemoHandle& memo() const { return memo_; }
  void setMemo(const MemoHandle& memo);
  [[nodiscard]] bool isExpanded() const { return isExpanded_; }
  void setExpanded(bool isExpanded);
  [[nodiscard]] bool isWhole() const { return isWhole_; }
  void setWhole(bool isWhole);
  [[nodiscard]] bool collapses() const { return collapses_; }
  [[nodiscard]] bool isTooLong() const { return isTooLong_; }

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

 signals:
  void shownChanged();

 private:
  void update();
  void show(std::vector<BodySegment> segments);

  MemoHandle memo_;
  bool isExpanded_ = false;
  bool isWhole_ = false;
  bool collapses_ = false;
  bool isTooLong_ = false;
  std::vector<BodySegment> segments_;
};

}  // namespace nomely
