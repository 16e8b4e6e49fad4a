#pragma once

#include <QRectF>
#include <QString>
#include <optional>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Text/TagChoices.h"

class QKeyEvent;
class QQuickItem;

namespace nomely {

class QuickTextView;

// The tags that may stand where a "#" is being typed. The keyboard stays in the text: its keys
// reach the list through EditorKeyFilter. Main thread.
class TagCompletion final : public nomely::TagChoices {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by an editor")
  // Of the "#" in the text area.
  Q_PROPERTY(QRectF place READ place NOTIFY openChanged)

 public:
  using TagChoices::TagChoices;

  // Both have to outlive it, or be taken back by null.
  void attach(QuickTextView* view, QQuickItem* area);

  [[nodiscard]] QRectF place() const { return place_; }

  // The user types: only that opens the list, a text that is set doesn't.
  void expectEdit() { isTyping_ = true; }
  [[nodiscard]] bool takes(const QKeyEvent& key) const;
  bool press(const QKeyEvent& key);

 public slots:
  // After an edit, or a move of the caret.
  void follow();

 protected:
  [[nodiscard]] bool isTyped(const QString& typed) const override;
  void take(const QString& tag) override;

 private:
  // What stands between the "#" and the caret; absent where no tag is being typed.
  [[nodiscard]] std::optional<QString> typedTag() const;

  QuickTextView* view_ = nullptr;
  QQuickItem* area_ = nullptr;
  QRectF place_;
  bool isTyping_ = false;
};

}  // namespace nomely
