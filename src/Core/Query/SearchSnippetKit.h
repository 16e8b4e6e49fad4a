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

// The first occurrence of `keyword` in `body` with up to forty characters on either side:
// "...早上去>>>公园<<<跑步...", without "..." on a side where the body ends. The whole body when
// there is no occurrence.
[[nodiscard]] std::string makeSnippet(std::string_view body, const TextNeedle& keyword);

// "去>>>公园<<<跑步" → "去", "公园" (highlighted), "跑步". An unpaired marker stays in the text. No
// run is empty.
[[nodiscard]] std::vector<Run> highlightedByMarkers(std::string_view snippet);

// The line for a memo that was found by its tags alone: "标签命中 #工作 #工作/计划" with the tags
// that contain `query`, or "命中「<query>」" when no visible one does.
[[nodiscard]] std::string tagFallbackSnippet(std::string_view query,
                                             const std::vector<std::string>& tags);

}  // namespace SearchSnippetKit

}  // namespace nomely
