#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "CLI/Syntax.h"

namespace nomely {

struct CompletionWord {
  std::string text;
  std::string help = {};  // one line; may be empty
};

// What may stand at the end of a command line.
struct Completion {
  std::vector<CompletionWord> words = {};  // commands, options and choices that begin as typed
  WordKind kind = WordKind::text;          // what else may stand there
  std::string before = {};                 // what comes before that in the word: "--tag="
  std::string typed = {};                  // what of it was typed
  std::optional<std::string> root = {};    // the data root that the line names
  std::string reference = {};              // the last REF or setting on the line; may be empty
};

// `words` are those before the word that is being typed, without the program's name; `current` is
// that word as far as it goes. What makes no sense to the program is passed over. Pure.
[[nodiscard]] Completion completionOf(const Syntax& program, std::span<const std::string> words,
                                      const std::string& current);

}  // namespace nomely
