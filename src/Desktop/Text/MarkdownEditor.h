#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <QString>
#include <QTimer>
#include <QUrl>
#include <optional>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Text/EditorKeyFilter.h"
#include "Desktop/Text/MarkdownHighlighter.h"
#include "Desktop/Text/QtPasteboard.h"
#include "Desktop/Text/QuickTextView.h"
#include "Desktop/Text/TagCompletion.h"

class QMimeData;

namespace nomely {

// Makes a TextArea an editor of Markdown: its keys, its colours, tags that complete, and what is
// pasted or dropped. A screen owns one and QML gives it the area; without an area it still has its
// text. Main thread.
class MarkdownEditor final : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by a screen")
  Q_PROPERTY(QQuickItem* area READ area WRITE setArea NOTIFY areaChanged)
  Q_PROPERTY(nomely::MarkdownHighlighter* highlighter READ highlighter CONSTANT)
  Q_PROPERTY(nomely::TagCompletion* completion READ completion CONSTANT)
  Q_PROPERTY(bool isInsideBold READ isInsideBold NOTIFY insideBoldChanged)

 public:
  enum Command { Heading, Bold, Italic, Bullets, Numbers, Checklist, Quote, Code, CodeBlock, Link };
  Q_ENUM(Command)

  explicit MarkdownEditor(const ScreenContext& context);
  ~MarkdownEditor() override;

  [[nodiscard]] QQuickItem* area() const { return area_; }
  void setArea(QQuickItem* area);
  [[nodiscard]] MarkdownHighlighter* highlighter() { return &highlighter_; }
  [[nodiscard]] TagCompletion* completion() { return &completion_; }
  [[nodiscard]] bool isInsideBold() const { return isInsideBold_; }

  // A copy of all of it.
  [[nodiscard]] QString text() const;
  [[nodiscard]] bool isEmpty() const;
  // Another text, with nothing to undo. Doesn't count as edited.
  void setText(const QString& text);
  // The same as an edit of the user's: one undo step brings the text before back.
  void replaceText(const QString& text);

  Q_INVOKABLE void apply(Command command);
  // A "#" at the caret, with the tags to choose from.
  Q_INVOKABLE void insertTagSign();
  Q_INVOKABLE void paste();
  // What is dropped, or on a clipboard: pictures and files are offered, anything else is text.
  void take(const QMimeData& mime);

 signals:
  void areaChanged();
  void insideBoldChanged();
  void edited();
  void submitted();
  void escaped();
  void menuAsked(QPointF at);
  void filesOffered(const QList<QUrl>& files);
  void pictureOffered(const nomely::OfferedPicture& picture);

 private:
  void insert(const QString& text);
  void pasteFrom(bool selection);
  void pastePlain();
  void lookForBold();

  QPointer<QQuickItem> area_;
  std::optional<QuickTextView> view_;
  std::optional<MarkdownCommandTextView> commands_;
  QPointer<EditorKeyFilter> keys_;
  QString stored_;  // the text while there is no area
  bool isSetting_ = false;
  MarkdownHighlighter highlighter_;
  TagCompletion completion_;
  bool isInsideBold_ = false;
  QTimer boldTimer_;
};

}  // namespace nomely
