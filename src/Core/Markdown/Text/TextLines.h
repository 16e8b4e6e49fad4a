#pragma once

#include <string_view>
#include <vector>

namespace nomely {

// What lies between the line feeds of a text, empty pieces included: one piece more than there are
// line feeds. Pure; the pieces are parts of `text`.
[[nodiscard]] std::vector<std::string_view> linesOf(std::string_view text);

}  // namespace nomely
