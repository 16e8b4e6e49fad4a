#pragma once

#include <string_view>
#include <vector>

#include "Core/Markdown/Text/ByteRange.h"
#include "Core/Markdown/Text/StyledText.h"

namespace nomely {

// Inline Markdown as CommonMark has it: emphasis, code, links, escapes and character references,
// besides "~~struck~~". Nothing at the beginning of a line is special, white space stays as it is,
// and HTML shows as text. Two blanks or a backslash before a line feed make it a hard break:
// they go and the line feed stays. An image is its description. Pure; safe on any thread; takes
// little more than time in proportion to the text.
[[nodiscard]] StyledText parsedInline(std::string_view text);

// What of one line is emphasized there, "*a*" and "_a_" with their marks. In rising order, none
// within another.
[[nodiscard]] std::vector<ByteRange> emphasizedRanges(std::string_view line);

}  // namespace nomely
