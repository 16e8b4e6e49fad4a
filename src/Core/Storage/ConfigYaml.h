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

// The secrets that a text holds which may say anything else, by key; none where it is no YAML.
[[nodiscard]] ConfigField::Map secretsIn(std::string_view text, const ConfigFields& fields);

struct Blanked {
  std::string text;
  bool heldSecrets = false;
};
// The text of a damaged file without its secrets: whatever stands after a secret's name, up to the
// next line that begins with a key, and every other place with the same value. Rather too much goes
// than too little. `text` need not be YAML, nor UTF-8.
//
// "apiKey sk-12\nmodel: x" → "apiKey: ''  # 已隐去\nmodel: x"
[[nodiscard]] Blanked withoutSecrets(std::string_view text, const ConfigFields& fields);

}  // namespace ConfigYaml

}  // namespace nomely
