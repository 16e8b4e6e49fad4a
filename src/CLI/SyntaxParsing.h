#pragma once

#include <string>
#include <vector>

#include "CLI/Syntax.h"

namespace nomely {

enum class ParsedAs { command, help, version };

// Puts the words of a command line into the targets of `program`'s arguments and marks the command
// and the action that they name. Options may stand before or after what they belong to, those of
// the program anywhere; "--" ends them. --help and --version win over everything else. Throws
// UsageError.
ParsedAs parseWords(Syntax& program, const std::vector<std::string>& words);

}  // namespace nomely
