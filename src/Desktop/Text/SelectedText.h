#pragma once

#include <QString>

class QTextDocument;

namespace nomely {

// A stretch of a document of a body, as other programs get it. Pure; main thread.
namespace SelectedText {

// Lines as they are shown; cells of a table have tabs between them.
[[nodiscard]] QString plain(const QTextDocument& document, int from, int to);
// The same as elements: what it says, without the colours and sizes of the window.
[[nodiscard]] QString html(const QTextDocument& document, int from, int to);

}  // namespace SelectedText

}  // namespace nomely
