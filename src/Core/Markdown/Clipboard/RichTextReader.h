#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace nomely {

// RTF as clipboards hold it. Pure; safe on any thread.
namespace RichTextReader {

// Whether `bytes` begin as RTF does.
[[nodiscard]] bool isRichText(std::string_view bytes);

// The text that a reader would see, without its formatting. Absent for RTF that is damaged: cut
// off, malformed, or nested deeper than any program writes. Linear in the text.
[[nodiscard]] std::optional<std::string> plainText(std::string_view rtf);

}  // namespace RichTextReader

}  // namespace nomely
