#pragma once

#include <vector>

#include "CLI/Completion.h"
#include "CLI/Session.h"

namespace nomely {

struct CompletionCandidates {
  std::vector<CompletionWord> words = {};
  bool arePartial = false;  // the word goes on after each of them
};

// What the diary has for the place that `completion` describes, likeliest first: dates, months,
// tags, REFs, attachments of the memo that the line names, entries of the trash, archives. Reads
// the root that the session has and never writes. Throws Error for what can't be read.
[[nodiscard]] CompletionCandidates candidatesFor(const Completion& completion, Session& session);

}  // namespace nomely
