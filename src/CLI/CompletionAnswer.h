#pragma once

#include <string>
#include <vector>

#include "CLI/Session.h"
#include "CLI/Syntax.h"

namespace nomely {

// What `nomely complete` prints for the scripts of `nomely completion`.
namespace CompletionAnswer {

// The command, which is none of the syntax: its words are those of another command line.
constexpr auto commandName = "complete";

// The first line says what the others are: "words", "partial" where the word goes on after each, or
// that none follow and the shell completes "files" or "folders" itself. A candidate a line, with
// what it is after a tab.
//
// `request` is {"bash", line up to the cursor, the part of it that is replaced}, and the answer has
// the words as they are to be put in; or {"zsh" or "fish", words after the program's name..., the
// word at the cursor}, and the answer has whole words without quotes. Anything else, and whatever
// can't be read, has no candidates. Never throws, says or changes anything.
[[nodiscard]] std::string to(const std::vector<std::string>& request, const Syntax& program,
                             Session& session) noexcept;

}  // namespace CompletionAnswer

}  // namespace nomely
