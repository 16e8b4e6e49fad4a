#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace nomely {

// `text` in lines of at most `width` columns, to which all but the first add `indent` blanks. Lines
// break at blanks and between East Asian characters, but not before a closing mark: "，。、）".
[[nodiscard]] std::string wrapText(std::string_view text, std::size_t width, std::size_t indent);

}  // namespace nomely
