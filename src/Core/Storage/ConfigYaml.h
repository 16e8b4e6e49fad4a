#pragma once

#include <string>
#include <string_view>

#include "Core/Storage/ConfigField.h"

namespace nomely {

// Settings as YAML. Pure.
namespace ConfigYaml {

// Puts what `text` says into the record. Throws YamlError, and then some of it may be there.
void decode(std::string_view text, const ConfigFields& fields);

// With secrets as they stand in the record.
[[nodiscard]] std::string encode(const ConfigFields& fields);

}  // namespace ConfigYaml

}  // namespace nomely
