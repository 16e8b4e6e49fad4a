#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace nomely {

// Where `needle` first begins in `text` when the ASCII letters of `text` count as lower-case. The
// needle has no upper-case ASCII letters and is not empty. `firstProbe` and `secondProbe` are
// offsets in the needle: only where both bytes match is the rest compared, so rare bytes make the
// search faster. Runs at about the speed of memory. Pure.
[[nodiscard]] std::optional<std::size_t> findLowered(std::string_view text, std::string_view needle,
                                                     std::size_t firstProbe,
                                                     std::size_t secondProbe);

}  // namespace nomely
