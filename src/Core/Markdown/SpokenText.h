#pragma once

#include <string>
#include <string_view>

namespace nomely {

// What a body says when it is read aloud: the text as it is shown, without Markdown's marks, the
// older text that it keeps, rules, and diagrams. A block a line. Pure but for shared caches.
//
// "# 早上\n\n- **跑步** [路线](a.com)\n\n| a | b |\n|---|---|\n" → "早上\n跑步 路线\na，b"
[[nodiscard]] std::string spokenText(std::string_view body);

}  // namespace nomely
