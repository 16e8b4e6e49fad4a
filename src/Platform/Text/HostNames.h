#pragma once

#include <string_view>

namespace nomely {

// Whether a host name in lower case, in ASCII or UTF-8, ends in a suffix under which names are
// registered ("com", "com.cn", "中国") with at least one label before it: "a.com" does, "com" does
// not. Safe on any thread.
[[nodiscard]] bool hasPublicSuffix(std::string_view host);

}  // namespace nomely
