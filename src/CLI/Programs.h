#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/System/Environment.h"

namespace nomely {

// Other programs that a command runs.
namespace Programs {

// The program of that name in $PATH; absent when there is none.
[[nodiscard]] std::optional<std::filesystem::path> find(std::string_view name,
                                                        const Environment& environment);

// Runs a program on the terminal, which has it to itself until it ends: interrupts are the
// program's. `words` are its name or path and its arguments. Returns its exit status, 128 plus the
// signal for a death, 127 when it can't be run.
[[nodiscard]] int run(const std::vector<std::string>& words);

}  // namespace Programs

}  // namespace nomely
