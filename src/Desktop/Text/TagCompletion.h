#pragma once

#include <QAbstractListModel>
#include <QRectF>
#include <QString>
#include <optional>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Base/BackgroundWork.h"
#include "Desktop/Base/ScreenContext.h"

class QKeyEvent;
class QQuickItem;

namespace nomely {

class QuickTextView;

// The tags that may stand where a "#" is being typed, the last used first. The keyboard stays in
// the text: its keys reach the list through EditorKeyFilter. Main thread.
class TagCompletion final : public QAbstractListModel {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by an editor")
  Q_PROPERTY(bool isOpen READ isOpen NOTIFY openChanged)
  Q_PROPERTY(int current READ current WRITE setCurrent NOTIFY currentChanged)
  // Of the "#" in the text area.
  Q_PROPERTY(QRectF place READ place NOTIFY openChanged)

 public:
  explicit TagCompletion(const ScreenContext& context);

  // Both have to outlive it, or be taken back by null.
  void attach(QuickTextView* view, QQuickItem* area);

  [[nodiscard]] bool isOpen() const { return !rows_.empty(); }
  [[nodiscard]] int current() const { return current_; }
  void setCurrent(int row);
  [[nodiscard]] QRectF place() const { return place_; }

  // The user types: only that opens the list, a text that is set doesn't.
  void expectEdit() { isTyping_ = true; }
  // Whether `press` would take the key.
  [[nodiscard]] bool takes(const QKeyEvent& key) const;
  bool press(const QKeyEvent& key);
  Q_INVOKABLE void choose(int row);
  Q_INVOKABLE void close();

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

 public slots:
  // After an edit, or a move of the caret.
  void follow();

 signals:
  void openChanged();
  void currentChanged();

 private:
  enum Role { Name = Qt::UserRole, Emoji, Tint };

  // What stands between the "#" and the caret; absent where no tag is being typed.
  [[nodiscard]] std::optional<QString> typedTag() const;
  [[nodiscard]] std::vector<QString> matching(const QString& typed) const;
  void show(std::vector<QString> rows);
  void readTags();

  const ScreenContext context_;
  QuickTextView* view_ = nullptr;
  QQuickItem* area_ = nullptr;
  std::vector<QString> tags_;  // all that show
  std::vector<QString> rows_;
  QString typed_;
  int current_ = 0;
  QRectF place_;
  bool isTyping_ = false;
  BackgroundWork work_;
};

}  // namespace nomely
