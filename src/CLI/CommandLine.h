#pragma once

#include <string>
#include <vector>

#include "CLI/Session.h"

namespace nomely {

// Runs the program: `arguments` are those after its name. Returns the exit status: 0 done,
// 1 failed, 2 wrong usage, 3 the memo changed elsewhere, 4 nothing by that name, 130 interrupted.
[[nodiscard]] int runCommandLine(const std::vector<std::string>& arguments, Machine machine);

}  // namespace nomely
