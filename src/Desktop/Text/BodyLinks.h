#pragma once

#include <QAbstractListModel>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Models/MemoHandle.h"

namespace nomely {

// The links of a memo's body, each address once. Main thread.
class BodyLinks : public QAbstractListModel {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(nomely::MemoHandle memo READ memo WRITE setMemo NOTIFY shownChanged)
  Q_PROPERTY(int count READ rowCount NOTIFY shownChanged)

 public:
  enum Role { Address = Qt::UserRole + 1, Title, Host };

  using QAbstractListModel::QAbstractListModel;

  [[nodiscard]] const MemoHandle& memo() const { return memo_; }
  void setMemo(const MemoHandle& memo);

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

 signals:
  void shownChanged();

 private:
  struct Link {
    QString address;
    QString title;
    QString host;
    friend bool operator==(const Link&, const Link&) = default;
  };

  MemoHandle memo_;
  std::vector<Link> links_;
};

}  // namespace nomely
