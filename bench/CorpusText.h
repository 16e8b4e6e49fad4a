#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "bench/Random.h"

namespace nomely::bench {

// Sentences as a diary has them: mostly Chinese, some mixed, some English.
[[nodiscard]] std::string drawSentence(Random& random);

// A Markdown text of one to some dozens of blocks, ending in a line feed. `tags` are named inline
// in some of them.
[[nodiscard]] std::string drawBody(Random& random, const std::vector<std::string>& tags);

}  // namespace nomely::bench
