#pragma once

#include <string>
#include <string_view>

namespace nomely {

// `text` fit to be shown: control characters but line feeds and tabs, which could drive a terminal,
// become U+FFFD. Pure.
[[nodiscard]] std::string printable(std::string_view text);

}  // namespace nomely
