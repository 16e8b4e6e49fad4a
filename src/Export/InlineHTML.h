#pragma once

#include <string>
#include <string_view>

namespace nomely {

// Text of a memo within an HTML page. Pure; linear in the text.
namespace InlineHTML {

// "&", "<" and ">" as entities.
[[nodiscard]] std::string escapeText(std::string_view text);
// The double quote as well: what may stand in an attribute.
[[nodiscard]] std::string escapeAttribute(std::string_view text);

// Bold, italic, code and links of one line as elements, everything else escaped. Plain global
// replacements without rules of nesting: code may hold italic. An address that would run a script
// makes no link, and its text stays as it was.
[[nodiscard]] std::string convert(std::string_view line);

}  // namespace InlineHTML

}  // namespace nomely
