#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace nomely {

// The comment at the end of a body that keeps the text from before an AI action:
//
//   <text>\n\n---\n<!-- original-base64:<the older text in base64> -->
//
// Two older forms with the text in plain, over lines or on one line, are read and never written.
// Pure.
namespace MemoTextUtilities {

[[nodiscard]] std::string appendOriginal(std::string_view original, std::string_view text);

// The older text; a comment that can't be decoded counts as none.
[[nodiscard]] std::optional<std::string> extractOriginal(std::string_view text);

[[nodiscard]] bool hasOriginalComment(std::string_view text);

// The text without such comments and the rules above them, trimmed at both ends.
[[nodiscard]] std::string stripOriginalComment(std::string_view text);

// What an editor shows of a body: the text without the comment, which editedBody puts back. A
// comment that can't be decoded stays in the text.
[[nodiscard]] std::string textForEditing(std::string_view body);
// What that editor saves: `editedText` with the comment of `body` put back after it. The older text
// in the comment is never replaced by a later one.
[[nodiscard]] std::string editedBody(std::string_view body, std::string_view editedText);
// What such an editor holds once `paragraph` has been added at the end.
[[nodiscard]] std::string textWithParagraph(std::string_view body, std::string_view paragraph);

}  // namespace MemoTextUtilities

}  // namespace nomely
