#pragma once

#include <string>
#include <vector>

#include "Platform/System/Environment.h"

namespace nomely {

// Runs the program: `arguments` are those behind its name. Returns the exit status: 0 done,
// 1 failed, 2 wrong usage, 3 the memo changed elsewhere, 4 nothing by that name.
[[nodiscard]] int runCommandLine(std::vector<std::string> arguments, Environment environment);

}  // namespace nomely
