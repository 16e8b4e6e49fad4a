#pragma once

#include <functional>
#include <string>

namespace nomely::test {

// Runs `body` in a forked child and returns the text it gives; what the child changes for its whole
// process stays there. Throws when the child does not end well.
[[nodiscard]] std::string inChild(const std::function<std::string()>& body);

// The same in another time zone, "America/New_York".
[[nodiscard]] std::string inZone(const char* zone, const std::function<std::string()>& body);

}  // namespace nomely::test
