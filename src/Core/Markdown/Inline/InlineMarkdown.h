#pragma once

#include <string_view>

#include "Core/Markdown/Text/StyledText.h"

namespace nomely {

// Inline Markdown as CommonMark has it: emphasis, code, links, escapes and character references,
// besides "~~struck~~". Nothing at the beginning of a line is special, white space stays as it is,
// and HTML shows as text. Two blanks or a backslash before a line feed make it a hard break:
// they go and the line feed stays. An image is its description. Pure; safe on any thread; takes
// little more than time in proportion to the text.
[[nodiscard]] StyledText parsedInline(std::string_view text);

}  // namespace nomely
