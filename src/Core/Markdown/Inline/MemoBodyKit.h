#pragma once

#include <string>
#include <string_view>

namespace nomely {

// How a long memo is shortened on its card, by estimate and without a layout. Pure. Only as much of
// a text is looked at as decides.
namespace MemoBodyKit {

// Of ideographs, kana and hangul among the characters at the beginning, from 0 to 1.
[[nodiscard]] double estimatedCJKRatio(std::string_view text);
[[nodiscard]] double estimatedRenderLines(std::string_view text);

[[nodiscard]] bool shouldCollapse(std::string_view text);
// The text, trimmed, where it fits the card; else its beginning with whatever it left open closed
// or taken off, and "..." after it.
[[nodiscard]] std::string collapsedPreview(std::string_view text);

// The repairs of a text that was cut off.
[[nodiscard]] std::string closeOpenColorSpan(std::string text);
[[nodiscard]] std::string trimUnclosedInlineMarkers(std::string text);
[[nodiscard]] std::string truncateUnclosedTable(std::string text);

}  // namespace MemoBodyKit

}  // namespace nomely
