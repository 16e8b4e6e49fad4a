#pragma once

#include <string>
#include <string_view>

namespace nomely {

// How a long memo is shortened on its card, by estimate and without a layout. Pure. Reads no more
// of a text than it needs to decide.
namespace MemoBodyKit {

// The share of ideographs, kana and hangul among the characters at the beginning, from 0 to 1.
[[nodiscard]] double estimatedCJKRatio(std::string_view text);
[[nodiscard]] double estimatedRenderLines(std::string_view text);

[[nodiscard]] bool shouldCollapse(std::string_view text);
// The trimmed text when it fits the card; else its beginning followed by "...", with colour spans
// that the cut left open closed, and cut further back to before a marker or table that it left
// unclosed.
[[nodiscard]] std::string collapsedPreview(std::string_view text);

// The repairs of a text that was cut off, which collapsedPreview makes.
[[nodiscard]] std::string closeOpenColorSpan(std::string text);
[[nodiscard]] std::string trimUnclosedInlineMarkers(std::string text);
[[nodiscard]] std::string truncateUnclosedTable(std::string text);

}  // namespace MemoBodyKit

}  // namespace nomely
