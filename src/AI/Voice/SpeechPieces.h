#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace nomely {

// A text in pieces of at most `most` characters that a reader counts: cut after the last line break
// that fits, else after the last end of a sentence, else in the middle. White space at the cuts
// goes; pieces with nothing to say are left out. Linear. Pure.
[[nodiscard]] std::vector<std::string> speechPieces(std::string_view text, std::size_t most);

}  // namespace nomely
