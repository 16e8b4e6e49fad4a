#include "Desktop/Text/EditorKeyFilter.h"

#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QQuickItem>

#include "Desktop/Text/Composing.h"
#include "Desktop/Text/TagCompletion.h"

namespace nomely {
namespace {

// Keys of the number pad are the same keys.
Qt::KeyboardModifiers modifiersOf(const QKeyEvent& key) {
  return key.modifiers() & ~Qt::KeypadModifier;
}

KeyPress keyPress(const QKeyEvent& key) {
  const Qt::KeyboardModifiers modifiers = modifiersOf(key);
  KeyPress press{.primary = modifiers.testFlag(Qt::ControlModifier),
                 .option = modifiers.testFlag(Qt::AltModifier),
                 .otherModifier = (modifiers & ~(Qt::ControlModifier | Qt::AltModifier)) != 0,
                 .characters = {}};
  constexpr int lastCharacter = 0x7F;
  if (key.key() > 0 && key.key() <= lastCharacter)
    press.characters = static_cast<char16_t>(key.key());
  return press;
}

bool isReturn(const QKeyEvent& key) {
  return key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter;
}

bool isTab(const QKeyEvent& key) {
  return (key.key() == Qt::Key_Tab || key.key() == Qt::Key_Backtab) &&
         (modifiersOf(key) & ~Qt::ShiftModifier) == 0;
}

bool isSubmit(const QKeyEvent& key) {
  return isReturn(key) && modifiersOf(key) == Qt::ControlModifier;
}

bool isPlainPaste(const QKeyEvent& key) {
  return key.key() == Qt::Key_V && modifiersOf(key) == (Qt::ControlModifier | Qt::ShiftModifier);
}

bool isMenuKey(const QKeyEvent& key) {
  return key.key() == Qt::Key_Menu ||
         (key.key() == Qt::Key_F10 && modifiersOf(key) == Qt::ShiftModifier);
}

// What would act on a text that is still being composed.
bool actsOnText(const QKeyEvent& key) {
  return isReturn(key) || key.key() == Qt::Key_Tab || key.key() == Qt::Key_Backtab ||
         key.key() == Qt::Key_Escape || key.modifiers().testFlag(Qt::ControlModifier);
}

// What would leave a text that is still being composed.
bool movesAway(const QKeyEvent& key) {
  return (key.key() >= Qt::Key_Home && key.key() <= Qt::Key_PageDown) || isMenuKey(key);
}

}  // namespace

EditorKeyFilter::EditorKeyFilter(QQuickItem& area, MarkdownCommandTextView& commands,
                                 TagCompletion& completion)
    : QObject(&area), area_(area), commands_(commands), completion_(completion) {
  area_.installEventFilter(this);
}

bool EditorKeyFilter::eventFilter(QObject* /*watched*/, QEvent* event) {
  switch (event->type()) {
    case QEvent::ShortcutOverride: {
      const auto& key = *static_cast<const QKeyEvent*>(event);
      if (!(isComposing(area_) ? actsOnText(key) : claims(key))) return false;
      event->accept();
      return true;
    }
    case QEvent::KeyPress: {
      const auto& key = *static_cast<const QKeyEvent*>(event);
      if (movesAway(key) && !actsOnText(key)) commitComposing(area_);
      const bool isTaken = isComposing(area_) ? actsOnText(key) : press(key);
      if (isTaken) event->accept();
      return isTaken;
    }
    case QEvent::InputMethod: {
      const QString committed = static_cast<const QInputMethodEvent*>(event)->commitString();
      if (!committed.isEmpty()) completion_.expectEdit();
      // Qt would leave what was composed in the line before.
      if (committed.contains(u'\n')) liftComposing(area_);
      return false;
    }
    case QEvent::MouseButtonPress:
      commitComposing(area_);
      [[fallthrough]];
    case QEvent::MouseButtonRelease:
      return clickMouse(*static_cast<const QMouseEvent*>(event));
    default:
      return false;
  }
}

// Keys that a shortcut of the window must not take.
bool EditorKeyFilter::claims(const QKeyEvent& key) const {
  return MarkdownCommandTextView::takes(keyPress(key)) || isSubmit(key) || isTab(key) ||
         isPlainPaste(key) || key.matches(QKeySequence::Paste) || key.key() == Qt::Key_Escape ||
         isMenuKey(key) || completion_.takes(key);
}

bool EditorKeyFilter::press(const QKeyEvent& key) {
  if (completion_.press(key)) return true;
  if (!key.text().isEmpty()) completion_.expectEdit();
  if (key.matches(QKeySequence::Paste)) {
    emit pasteAsked(false);
  } else if (isPlainPaste(key)) {
    emit plainPasteAsked();
  } else if (isSubmit(key)) {
    emit submitted();
  } else if (isReturn(key)) {
    return breakLine(key);
  } else if (isTab(key)) {
    if (key.key() == Qt::Key_Backtab || key.modifiers().testFlag(Qt::ShiftModifier))
      commands_.insertBacktab();
    else
      commands_.insertTab();
  } else if (key.key() == Qt::Key_Escape) {
    emit escaped();
  } else if (isMenuKey(key)) {
    emit menuAsked(area_.property("cursorRectangle").toRectF().bottomLeft());
  } else {
    return commands_.handleKey(keyPress(key));
  }
  return true;
}

// With Shift the line breaks without a list going on. The text area's own would be a character of
// its own, which no line of a memo ends with.
bool EditorKeyFilter::breakLine(const QKeyEvent& key) {
  if (modifiersOf(key) == Qt::ShiftModifier) {
    commands_.insertSnippet(u"\n");
    return true;
  }
  return modifiersOf(key) == Qt::NoModifier && commands_.insertNewline();
}

bool EditorKeyFilter::clickMouse(const QMouseEvent& mouse) {
  const bool isPress = mouse.type() == QEvent::MouseButtonPress;
  if (mouse.button() == Qt::RightButton) {
    if (isPress) {
      area_.forceActiveFocus(Qt::MouseFocusReason);
      emit menuAsked(mouse.position());
    }
    return true;
  }
  if (mouse.button() != Qt::MiddleButton) return false;
  if (!isPress) {
    int position = 0;
    QMetaObject::invokeMethod(&area_, "positionAt", Q_RETURN_ARG(int, position),
                              Q_ARG(qreal, mouse.position().x()),
                              Q_ARG(qreal, mouse.position().y()));
    area_.forceActiveFocus(Qt::MouseFocusReason);
    area_.setProperty("cursorPosition", position);
    emit pasteAsked(true);
  }
  return true;
}

}  // namespace nomely
