#pragma once

#include <string>
#include <string_view>

namespace nomely {

// Last path components, cut at the last dot. A name has no extension when that dot is its first
// character or nothing follows it.

[[nodiscard]] std::string_view lastComponent(std::string_view path);
// Without the dot; empty when there is none.
[[nodiscard]] std::string_view pathExtension(std::string_view name);
[[nodiscard]] std::string_view withoutExtension(std::string_view name);
// ASCII letters in lower case: extensions are compared that way.
[[nodiscard]] std::string lowerCaseExtension(std::string_view name);

}  // namespace nomely
