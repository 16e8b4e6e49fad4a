#include "Desktop/Text/TagCompletion.h"

#include <QKeyEvent>
#include <QQuickItem>
#include <QTextBlock>
#include <QTextDocument>
#include <utility>
#include <vector>

#include "Core/Markdown/Text/TagParser.h"
#include "Desktop/Base/Qt.h"
#include "Desktop/Text/Composing.h"
#include "Desktop/Text/MarkdownHighlighter.h"
#include "Desktop/Text/QuickTextView.h"

namespace nomely {
namespace {

constexpr qsizetype longestTag = 64;

}  // namespace

void TagCompletion::attach(QuickTextView* view, QQuickItem* area) {
  close();
  view_ = view;
  area_ = area;
  if (area_ != nullptr) connect(area_, SIGNAL(cursorPositionChanged()), this, SLOT(follow()));
}

std::optional<QString> TagCompletion::typedTag() const {
  const TextSelection caret = view_->selectedRange();
  if (caret.length > 0 || isComposing(*area_)) return std::nullopt;
  const auto position = static_cast<int>(caret.location);
  const QTextBlock block = view_->document().findBlock(position);
  const QString before = block.text().left(position - block.position());
  const qsizetype sign = before.lastIndexOf(QLatin1Char('#'));
  if (sign < 0 || before.size() - sign > longestTag || MarkdownHighlighter::isCode(block))
    return std::nullopt;
  QString typed = before.mid(sign + 1);
  // As if one letter more stood there, and not alone on its line: a bare "#" is about to become a
  // tag, and a long word will be one as soon as the line goes on.
  const QString probe = QLatin1String("x ") + before + QLatin1Char('x');
  const std::vector<TagParser::Match> found = TagParser::matches(utf8(probe));
  if (found.empty() || qt(found.back().tag) != typed + QLatin1Char('x')) return std::nullopt;
  return typed;
}

void TagCompletion::follow() {
  if (view_ == nullptr) return;
  const bool mayOpen = std::exchange(isTyping_, false) || isOpen();
  const auto typed = mayOpen ? typedTag() : std::nullopt;
  if (!typed) return close();
  const auto sign =
      static_cast<int>(view_->selectedRange().location) - static_cast<int>(typed->size()) - 1;
  QMetaObject::invokeMethod(area_, "positionToRectangle", Q_RETURN_ARG(QRectF, place_),
                            Q_ARG(int, sign));
  offer(*typed);
}

bool TagCompletion::isTyped(const QString& typed) const {
  return view_ != nullptr && typedTag() == typed;
}

bool TagCompletion::takes(const QKeyEvent& key) const {
  return (key.modifiers() & ~Qt::KeypadModifier) == 0 && TagChoices::takes(key.key());
}

bool TagCompletion::press(const QKeyEvent& key) {
  return takes(key) && TagChoices::press(key.key());
}

void TagCompletion::take(const QString& tag) {
  if (view_ == nullptr) return;
  const std::size_t caret = view_->selectedRange().location;
  const auto begin = caret - static_cast<std::size_t>(typed().size());
  const bool hasBlank = view_->document().characterAt(static_cast<int>(caret)) == u' ';
  view_->replaceText({begin, caret}, (hasBlank ? tag : tag + u' ').toStdU16String());
  view_->setSelectedRange({begin + static_cast<std::size_t>(tag.size()) + 1, 0});
}

}  // namespace nomely
