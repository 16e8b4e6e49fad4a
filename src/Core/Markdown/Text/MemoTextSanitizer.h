#pragma once

#include <string>
#include <string_view>

namespace nomely {

// Removes the placeholders of pictures and files from pasted text: object replacement characters,
// and marks such as "[Image #1]" or "[附件 #2]". Pure.
namespace MemoTextSanitizer {

enum class Edges { keep, trim };

// "a\n[Image #1]\nb" → "a\nb": a mark alone on its line is removed with the line. "a [Image #1] b"
// → "ab": one inside a line is removed with the blanks around it.
[[nodiscard]] std::string removingAttachmentPlaceholders(std::string_view text, Edges edges);

}  // namespace MemoTextSanitizer

}  // namespace nomely
