#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "CLI/Syntax.h"

namespace nomely {

// What a user reads about a command line. Pure.
namespace HelpText {

// The program, a command of it, an action of that.
using Chain = std::vector<const Syntax*>;

// "nomely history REF show [选项] N"
[[nodiscard]] std::string usage(const Chain& chain);
// Everything about the last of the chain in lines of at most `width` columns, with an example and
// the program's own options.
[[nodiscard]] std::string of(const Chain& chain, std::size_t width);
// "REF...", "-n, --limit N"
[[nodiscard]] std::string heading(const Argument& argument);

}  // namespace HelpText

}  // namespace nomely
