#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "Core/Storage/ConfigField.h"

namespace nomely {

// What a setting is set to; nothing where an optional one is not set.
using ConfigValue = std::variant<std::monostate, std::string, bool, double, std::int64_t>;

// Whether it is UTF-8 without line breaks and control characters, as settings and secrets are.
[[nodiscard]] bool isOneLine(std::string_view text);

// Of a field that is no mapping.
[[nodiscard]] ConfigValue valueOf(const ConfigField& field);

// Sets it to what a user typed; an empty text takes an optional value away. Throws ConfigError
// (badValue), which says what would be right, and then nothing is set.
void setFromText(const ConfigField& field, const std::string& text);

}  // namespace nomely
