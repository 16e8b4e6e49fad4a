#pragma once

#include <filesystem>
#include <string_view>

namespace nomely {

// Names of files on their way to the name that they are to have: hidden, no two alike, and known
// to whoever sweeps what writers that died left behind.
namespace TemporaryName {
[[nodiscard]] std::filesystem::path freshIn(const std::filesystem::path& folder);
// Whether a last path component is such a name.
[[nodiscard]] bool matches(std::string_view name);
}  // namespace TemporaryName

}  // namespace nomely
