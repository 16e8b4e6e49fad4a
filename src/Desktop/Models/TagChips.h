#pragma once

#include <QAbstractListModel>
#include <string>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "Core/Storage/TagConfigStore.h"
#include "Platform/Concurrency/Subscription.h"

namespace nomely {

// A memo's tags as chips, with the looks that the user gave them. Hidden tags are kept and not
// shown. Main thread.
class TagChips final : public QAbstractListModel {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by a screen")

 public:
  // `looks` must outlive it.
  explicit TagChips(const TagConfigStore& looks);

  // All of them.
  [[nodiscard]] const std::vector<std::string>& tags() const { return tags_; }
  void set(std::vector<std::string> tags);

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

 private:
  enum Role { Name = Qt::UserRole, Emoji, Tint };

  const TagConfigStore& looks_;
  std::vector<std::string> tags_;
  std::vector<std::string> shown_;
  Subscription looksChanged_;
};

}  // namespace nomely
