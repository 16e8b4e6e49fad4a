#pragma once

#include <string>
#include <string_view>

namespace nomely {

// A memo's body as a part of a longer Markdown document. Its headings go below the two levels that
// the document has of its own ("# 计划" → "### 计划"), a rule below text stays a rule instead of
// making that text a heading, and code that is left open ends with the memo. All else is as it was
// written. Ends with a line feed. Pure; linear in the text.
[[nodiscard]] std::string nestedBody(std::string_view body);

}  // namespace nomely
