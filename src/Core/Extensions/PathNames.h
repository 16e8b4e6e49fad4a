#pragma once

#include <string>
#include <string_view>

namespace nomely {

// Parts of paths: "/a/b.tar.gz" has the last component "b.tar.gz", and that the extension "gz". A
// name has no extension when its last dot is its first character or nothing follows it: ".md",
// "a.".

[[nodiscard]] std::string_view lastComponent(std::string_view path);
// Without the dot; empty when there is none.
[[nodiscard]] std::string_view pathExtension(std::string_view name);
[[nodiscard]] std::string_view withoutExtension(std::string_view name);
// ASCII letters in lower case: extensions are compared that way.
[[nodiscard]] std::string lowerCaseExtension(std::string_view name);

}  // namespace nomely
