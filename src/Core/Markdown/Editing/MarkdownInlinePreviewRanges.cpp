#include "Core/Markdown/Editing/MarkdownInlinePreviewRanges.h"

#include <algorithm>

namespace nomely {

using Range = MarkdownInlinePreviewRange;

std::vector<Range> MarkdownInlinePreviewRanges::ranges(std::u16string_view text) {
  constexpr std::u16string_view marker = u"**";
  std::vector<Range> found;
  std::size_t opening = text.find(marker);
  while (opening != std::u16string_view::npos) {
    const std::size_t content = opening + marker.size();
    // At least one character lies between, be it an asterisk.
    const std::size_t closing = text.find(marker, content + 1);
    if (closing == std::u16string_view::npos) break;
    const std::size_t end = closing + marker.size();
    found.push_back({Range::Kind::hiddenMarker, {opening, content}});
    found.push_back({Range::Kind::boldContent, {content, closing}});
    found.push_back({Range::Kind::hiddenMarker, {closing, end}});
    opening = text.find(marker, end);
  }
  return found;
}

bool MarkdownInlinePreviewRanges::isInsideBold(std::u16string_view text, std::size_t location) {
  if (location > text.size()) return false;
  return std::ranges::any_of(ranges(text), [&](const Range& each) {
    return each.kind == Range::Kind::boldContent && each.range.begin <= location &&
           location <= each.range.end;
  });
}

}  // namespace nomely
