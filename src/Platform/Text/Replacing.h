#pragma once

#include <string>
#include <string_view>

namespace nomely {

// `text` with every `from`, left to right, turned into `to`. `from` is not empty. Pure; linear.
[[nodiscard]] std::string replacingAll(std::string_view text, std::string_view from,
                                       std::string_view to);

}  // namespace nomely
