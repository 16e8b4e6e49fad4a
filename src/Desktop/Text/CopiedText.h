#pragma once

#include <QString>

#include "Desktop/Models/MemoHandle.h"

namespace nomely {

// What is copied of a memo. Main thread.
namespace CopiedText {

// The body as it is written, without the comment that keeps an older text.
[[nodiscard]] QString markdown(const MemoHandle& memo);
// What its card says: lines with their markers, without Markdown's marks.
[[nodiscard]] QString plain(const MemoHandle& memo);

// Without HTML, as text alone.
void toClipboard(const QString& text, const QString& html = {});

}  // namespace CopiedText

}  // namespace nomely
