#pragma once

#include <string_view>

namespace nomely {

// Whether an address may be made into a link: not when following it would run what it says, as
// those of the schemes javascript: and data: do. Looks through what a browser would look through:
// white space, control characters and character references. Pure.
[[nodiscard]] bool mayBeLinked(std::string_view url);

}  // namespace nomely
