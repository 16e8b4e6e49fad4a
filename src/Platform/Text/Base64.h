#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace nomely {

// Standard alphabet with padding, on one line. Pure.
[[nodiscard]] std::string encodeBase64(std::string_view bytes);
// Absent when `text` holds a character outside the alphabet, or its padding is missing or
// misplaced.
[[nodiscard]] std::optional<std::string> decodeBase64(std::string_view text);

}  // namespace nomely
