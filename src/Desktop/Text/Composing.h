#pragma once

#include <QString>

class QQuickItem;

namespace nomely {

// Of a TextArea: what an input method composes in it stands in the line of the caret, but isn't
// part of the text yet. Qt moves the caret by places in that line as if they were places in the
// text, and leaves it behind the text's end; so composing ends, or is taken off, before the caret
// leaves it or the text changes under it. Main thread.
[[nodiscard]] bool isComposing(const QQuickItem& area);
// What is composed becomes text at the caret; nothing without composing.
void commitComposing(QQuickItem& area);
// Takes what is composed off the line, and returns it. The input method still has it, and goes on
// at wherever the caret is then.
QString liftComposing(QQuickItem& area);
// Shows at the caret what was taken off.
void resumeComposing(QQuickItem& area, const QString& composed);

}  // namespace nomely
