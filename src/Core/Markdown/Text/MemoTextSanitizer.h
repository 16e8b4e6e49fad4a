#pragma once

#include <string>
#include <string_view>

namespace nomely {

// Takes out of pasted text what stood for its pictures and files: object replacement characters,
// and marks such as "[Image #1]" or "[附件 #2]". Pure.
namespace MemoTextSanitizer {

enum class Edges { keep, trim };

// A mark alone on its line goes with the line, one inside a line with the blanks around it.
[[nodiscard]] std::string removingAttachmentPlaceholders(std::string_view text, Edges edges);

}  // namespace MemoTextSanitizer

}  // namespace nomely
