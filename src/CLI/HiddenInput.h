#pragma once

#include <string>
#include <string_view>

namespace nomely {

// Asks on the terminal for a line that does not show while it is typed. A signal that ends the
// program gives the terminal back as it was. Throws UsageError when nothing is typed.
[[nodiscard]] std::string readHidden(std::string_view prompt);

}  // namespace nomely
