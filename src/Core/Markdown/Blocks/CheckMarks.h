#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace nomely {

// Ticking off items where they are shown. Pure.
namespace CheckMarks {

// `body` with the box of a check item ticked, or with its tick taken off: one byte differs. `line`
// is the item's among the blocks of stripOriginalComment(body), or of a preview of that. Absent
// when that line is no check item.
[[nodiscard]] std::optional<std::string> toggled(std::string_view body, std::size_t line);

}  // namespace CheckMarks

}  // namespace nomely
