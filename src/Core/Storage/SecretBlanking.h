#pragma once

#include <string>
#include <string_view>

#include "Core/Storage/ConfigField.h"

namespace nomely {

// Secrets in the text of a settings file that may be damaged. Pure.
namespace SecretBlanking {

// The secrets that a text holds, whatever else it says.
struct HeldSecrets {
  ConfigField::Map byKey;     // in their places
  bool areElsewhere = false;  // more, in places where they can't be told from other text
};
[[nodiscard]] HeldSecrets secretsIn(std::string_view text, const ConfigFields& fields);

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

}  // namespace SecretBlanking

}  // namespace nomely
