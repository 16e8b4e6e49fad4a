#pragma once

#include <string>
#include <string_view>

namespace nomely {

// Text of a memo within an HTML page. Pure; linear in the text.
namespace InlineHTML {

// `a < b & c` → `a &lt; b &amp; c`; ">" becomes "&gt;".
[[nodiscard]] std::string escapeText(std::string_view text);
// For a double-quoted attribute: like escapeText, with '"' as an entity too.
[[nodiscard]] std::string escapeAttribute(std::string_view text);

// Turns bold, italic, code and links of one line into elements and escapes everything else. These
// are plain global replacements without nesting rules: italic inside code becomes italic. A link
// whose address would run a script stays as it was typed.
[[nodiscard]] std::string convert(std::string_view line);

}  // namespace InlineHTML

}  // namespace nomely
