#include "Desktop/Text/MarkdownEditor.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QQuickItem>
#include <QTextDocument>
#include <chrono>

#include "Core/Markdown/Clipboard/ClipboardMarkdownImporter.h"
#include "Core/Markdown/Editing/MarkdownInlinePreviewRanges.h"
#include "Desktop/Base/Qt.h"
#include "Desktop/Text/Composing.h"

namespace nomely {
namespace {

MarkdownEditCommand commandOf(MarkdownEditor::Command command) {
  using namespace MarkdownEdit;
  switch (command) {
    case MarkdownEditor::Heading:
      return MarkdownEdit::Heading{1};
    case MarkdownEditor::Bold:
      return MarkdownEdit::Bold{};
    case MarkdownEditor::Italic:
      return MarkdownEdit::Italic{};
    case MarkdownEditor::Bullets:
      return UnorderedList{};
    case MarkdownEditor::Numbers:
      return OrderedList{};
    case MarkdownEditor::Checklist:
      return MarkdownEdit::Checklist{};
    case MarkdownEditor::Quote:
      return MarkdownEdit::Quote{};
    case MarkdownEditor::Code:
      return InlineCode{};
    case MarkdownEditor::CodeBlock:
      return MarkdownEdit::CodeBlock{};
    case MarkdownEditor::Link:
      return MarkdownEdit::Link{};
  }
  return MarkdownEdit::Bold{};
}

// A text with the line ends that an area has: all others become them there.
QString withLineFeeds(QString text) {
  text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
  text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
  text.replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
  return text;
}

}  // namespace

MarkdownEditor::MarkdownEditor(const ScreenContext& context)
    : highlighter_(nullptr), completion_(context) {
  // The button may light up a moment after the caret came: a look at the whole text is not for
  // every key.
  constexpr std::chrono::milliseconds boldDelay{60};
  boldTimer_.setSingleShot(true);
  boldTimer_.setInterval(boldDelay);
  connect(&boldTimer_, &QTimer::timeout, this, &MarkdownEditor::lookForBold);
}

MarkdownEditor::~MarkdownEditor() {
  delete keys_;
}

void MarkdownEditor::setArea(QQuickItem* area) {
  if (area == area_) return;
  if (area_) {
    stored_ = view_->content();
    area_->disconnect(this);
  }
  delete keys_;
  completion_.attach(nullptr, nullptr);
  highlighter_.setDocument(nullptr);
  commands_.reset();
  view_.reset();
  area_ = area;
  if (area_) {
    connect(area_, &QObject::destroyed, this, [this] {
      completion_.attach(nullptr, nullptr);
      commands_.reset();
      view_.reset();
    });
    view_.emplace(*area_);
    commands_.emplace(*view_);
    keys_ = new EditorKeyFilter(*area_, *commands_, completion_);
    connect(keys_, &EditorKeyFilter::submitted, this, &MarkdownEditor::submitted);
    connect(keys_, &EditorKeyFilter::escaped, this, &MarkdownEditor::escaped);
    connect(keys_, &EditorKeyFilter::menuAsked, this, &MarkdownEditor::menuAsked);
    connect(keys_, &EditorKeyFilter::pasteAsked, this, &MarkdownEditor::pasteFrom);
    connect(keys_, &EditorKeyFilter::plainPasteAsked, this, &MarkdownEditor::pastePlain);
    connect(area_, SIGNAL(cursorPositionChanged()), &boldTimer_, SLOT(start()));
    highlighter_.setDocument(&view_->document());
    setText(stored_);
    connect(&view_->document(), &QTextDocument::contentsChange, this, [this] {
      if (!isSetting_ && !highlighter_.isInSlice()) emit edited();
    });
    completion_.attach(&*view_, area_);
  }
  emit areaChanged();
}

QString MarkdownEditor::text() const {
  return area_ ? view_->content() : stored_;
}

bool MarkdownEditor::isEmpty() const {
  return area_ ? view_->document().isEmpty() : stored_.isEmpty();
}

void MarkdownEditor::setText(const QString& text) {
  stored_ = withLineFeeds(text);
  if (!area_) return;
  isSetting_ = true;
  view_->reset(stored_);
  isSetting_ = false;
}

void MarkdownEditor::replaceText(const QString& text) {
  if (!area_) return setText(text);
  commands_->apply(MarkdownEditResult{text.toStdU16String(), view_->selectedRange()});
}

void MarkdownEditor::apply(Command command) {
  if (!area_) return;
  area_->forceActiveFocus();
  commitComposing(*area_);
  commands_->apply(commandOf(command));
}

void MarkdownEditor::insertTagSign() {
  if (!area_) return;
  area_->forceActiveFocus();
  commitComposing(*area_);
  const auto caret = static_cast<int>(view_->selectedRange().location);
  const bool needsBlank = caret > 0 && !view_->document().characterAt(caret - 1).isSpace();
  completion_.expectEdit();
  commands_->insertSnippet(needsBlank ? u" #" : u"#");
}

void MarkdownEditor::insert(const QString& text) {
  commitComposing(*area_);
  commands_->insertSnippet(withLineFeeds(text).toStdU16String());
}

void MarkdownEditor::take(const QMimeData& mime) {
  if (!area_) return;
  const QtPasteboard pasteboard(mime);
  if (const QList<QUrl> files = pasteboard.files(); !files.isEmpty())
    return emit filesOffered(files);
  const PasteDecision decision = decidePaste(pasteboard);
  switch (decision.action) {
    case PasteDecision::Action::takeImages:
      return emit pictureOffered(pasteboard.picture());
    case PasteDecision::Action::insertText:
      return insert(qt(decision.text));
    case PasteDecision::Action::ordinaryPaste:
      return insert(mime.text());
  }
}

void MarkdownEditor::paste() {
  pasteFrom(false);
}

void MarkdownEditor::pasteFrom(bool selection) {
  const QClipboard& clipboard = *QGuiApplication::clipboard();
  if (selection && !clipboard.supportsSelection()) return;
  const QMimeData* mime =
      clipboard.mimeData(selection ? QClipboard::Selection : QClipboard::Clipboard);
  if (mime != nullptr) take(*mime);
}

void MarkdownEditor::pastePlain() {
  const QString text = QGuiApplication::clipboard()->text();
  if (!text.isEmpty()) insert(text);
}

void MarkdownEditor::lookForBold() {
  const bool isInside = area_ && MarkdownInlinePreviewRanges::isInsideBold(
                                     view_->text(), view_->selectedRange().location);
  if (isInside == isInsideBold_) return;
  isInsideBold_ = isInside;
  emit insideBoldChanged();
}

}  // namespace nomely
