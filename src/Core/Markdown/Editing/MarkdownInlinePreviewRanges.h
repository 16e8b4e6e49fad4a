#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "Platform/Text/RegularExpression.h"

namespace nomely {

struct MarkdownInlinePreviewRange {
  enum class Kind { hiddenMarker, boldContent };

  Kind kind = Kind::hiddenMarker;
  TextRange range;

  friend bool operator==(const MarkdownInlinePreviewRange&,
                         const MarkdownInlinePreviewRange&) = default;
};

// Where bold text lies in a body that is being edited, for styling it in place. Pure.
namespace MarkdownInlinePreviewRanges {

// Three ranges for each bold text: "**ab**" → 0–2 hiddenMarker, 2–4 boldContent, 4–6 hiddenMarker.
[[nodiscard]] std::vector<MarkdownInlinePreviewRange> ranges(std::u16string_view text);

// Whether a caret at `location` stands in bold text or at one of its ends.
[[nodiscard]] bool isInsideBold(std::u16string_view text, std::size_t location);

}  // namespace MarkdownInlinePreviewRanges

}  // namespace nomely
