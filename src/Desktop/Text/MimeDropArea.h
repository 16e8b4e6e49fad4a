#pragma once

#include <QQuickItem>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Text/MarkdownEditor.h"

namespace nomely {

// Takes what is dropped on it into an editor: files, pictures, text.
class MimeDropArea : public QQuickItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(nomely::MarkdownEditor* editor MEMBER editor_ NOTIFY editorChanged)
  Q_PROPERTY(bool containsDrag READ containsDrag NOTIFY containsDragChanged)

 public:
  explicit MimeDropArea(QQuickItem* parent = nullptr);

  [[nodiscard]] bool containsDrag() const { return containsDrag_; }

 signals:
  void editorChanged();
  void containsDragChanged();

 protected:
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragLeaveEvent(QDragLeaveEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void setContainsDrag(bool contains);

  MarkdownEditor* editor_ = nullptr;
  bool containsDrag_ = false;
};

}  // namespace nomely
