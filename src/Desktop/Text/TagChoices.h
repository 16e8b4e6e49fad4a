#pragma once

#include <QAbstractListModel>
#include <QString>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Base/BackgroundWork.h"
#include "Desktop/Base/ScreenContext.h"

namespace nomely {

// The tags that fit what is being typed somewhere, the last used first, with the keys that choose
// among them. The keyboard stays where one types. Main thread.
class TagChoices : public QAbstractListModel {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by an editor")
  Q_PROPERTY(bool isOpen READ isOpen NOTIFY openChanged)
  Q_PROPERTY(int current READ current WRITE setCurrent NOTIFY currentChanged)

 public:
  explicit TagChoices(const ScreenContext& context);

  [[nodiscard]] bool isOpen() const { return !rows_.empty(); }
  [[nodiscard]] int current() const { return current_; }
  void setCurrent(int row);

  // Whether `press` would take the key.
  [[nodiscard]] bool takes(int key) const;
  Q_INVOKABLE bool press(int key);
  Q_INVOKABLE void choose(int row);
  Q_INVOKABLE void close();

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

 signals:
  void openChanged();
  void currentChanged();

 protected:
  // Shows what fits.
  void offer(const QString& typed);
  [[nodiscard]] const QString& typed() const { return typed_; }

  // Whether that tag may be offered at all.
  [[nodiscard]] virtual bool isOffered(const QString& /*tag*/) const { return true; }
  // Whether `typed` is still what is being typed.
  [[nodiscard]] virtual bool isTyped(const QString& typed) const = 0;
  // Puts the tag where one types.
  virtual void take(const QString& tag) = 0;

 private:
  enum Role { Name = Qt::UserRole, Emoji, Tint };

  [[nodiscard]] std::vector<QString> matching() const;
  void show(std::vector<QString> rows);
  void readTags();

  const ScreenContext context_;
  std::vector<QString> tags_;  // all that show
  std::vector<QString> rows_;
  QString typed_;
  int current_ = 0;
  BackgroundWork work_;
};

}  // namespace nomely
