#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace nomely {

// Checks of CLI11 for `option->check(...)` that say what is wrong in Chinese. They throw UsageError
// while the command line is parsed.
namespace Checks {

// "auto", "always" or "never".
[[nodiscard]] CLI::Validator oneOf(std::vector<std::string> words);
// An integer from 1 on; `what` names it.
[[nodiscard]] CLI::Validator positive(std::string what);
// A file that is there and no folder. Throws NameNotFoundError too.
[[nodiscard]] CLI::Validator existingFile();

}  // namespace Checks

}  // namespace nomely
