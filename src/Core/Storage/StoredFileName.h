#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace nomely::StoredFileName {

// A name for bytes that come in without one and become an attachment: a random identity and the
// extension, if there is any. Absent when that makes no safe name.
[[nodiscard]] std::optional<std::string> fresh(std::string_view extension);

}  // namespace nomely::StoredFileName
