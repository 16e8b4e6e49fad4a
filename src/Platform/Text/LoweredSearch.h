#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace nomely {

// Where `needle` first begins in `text` when the ASCII letters of `text` count as lower-case. The
// needle has no upper-case ASCII letters and is not empty. Its bytes at the two positions are
// looked for first; the less common they are, the faster. Goes through text about as fast as memory
// gives it. Pure.
[[nodiscard]] std::optional<std::size_t> findLowered(std::string_view text, std::string_view needle,
                                                     std::size_t firstProbe,
                                                     std::size_t secondProbe);

}  // namespace nomely
