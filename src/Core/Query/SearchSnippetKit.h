#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Platform/Text/FoldedText.h"

namespace nomely {

// The line of text that shows why a memo was found. Pure.
namespace SearchSnippetKit {

struct Run {
  std::string text;
  bool isHighlighted = false;

  friend bool operator==(const Run&, const Run&) = default;
};

// The first occurrence in `body`, between ">>>" and "<<<", with up to forty characters on either
// side and "..." where the body goes on; the whole body when there is none.
[[nodiscard]] std::string makeSnippet(std::string_view body, const TextNeedle& keyword);

// Cuts such a line at its markers, which go; unpaired ones stay text. No run is empty.
[[nodiscard]] std::vector<Run> highlightedByMarkers(std::string_view snippet);

// The line for a memo that only its tags explain.
[[nodiscard]] std::string tagFallbackSnippet(std::string_view query,
                                             const std::vector<std::string>& tags);

}  // namespace SearchSnippetKit

}  // namespace nomely
