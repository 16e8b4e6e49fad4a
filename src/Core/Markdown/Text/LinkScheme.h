#pragma once

#include <string_view>

namespace nomely {

// Whether an address may be made into a link: false when following it could run a script, as with
// javascript: and data:. Ignores what a browser ignores, white space and control characters, and
// decodes character references: "java&#10;script:x" → false. Pure.
[[nodiscard]] bool mayBeLinked(std::string_view url);

}  // namespace nomely
