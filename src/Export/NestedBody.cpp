#include "Export/NestedBody.h"

#include <algorithm>

#include "Core/Markdown/Text/TextLines.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr std::size_t ownLevels = 2;
constexpr std::size_t deepestLevel = 6;
constexpr std::size_t shortestFence = 3;

std::size_t runLength(std::string_view text, char c) {
  return std::min(text.find_first_not_of(c), text.size());
}

// The marks of a line that opens code ("```python"); empty for any other.
std::string_view openingFence(std::string_view line) {
  line = trimSpaceAndBreaks(line);
  if (!line.starts_with('`') && !line.starts_with('~')) return {};
  const std::size_t length = runLength(line, line.front());
  // "```a```" is code within a line.
  const bool isInline = line.front() == '`' && line.find('`', length) != std::string_view::npos;
  return length < shortestFence || isInline ? std::string_view() : line.substr(0, length);
}

bool closesFence(std::string_view line, std::string_view fence) {
  line = trimSpaceAndBreaks(line);
  return line.size() >= fence.size() && runLength(line, fence.front()) == line.size();
}

// The "#" of a heading, a part of `line`; empty for any other line.
std::string_view headingMarks(std::string_view line) {
  constexpr std::size_t deepestIndent = 3;
  const std::size_t indent = runLength(line, ' ');
  line.remove_prefix(indent);
  const std::size_t level = runLength(line, '#');
  const bool ends = trimSpaceAndBreaks(line.substr(level, 1)).empty();
  return indent <= deepestIndent && level <= deepestLevel && ends ? line.substr(0, level)
                                                                  : std::string_view();
}

bool underlines(std::string_view line) {
  line = trimSpaceAndBreaks(line);
  return !line.empty() &&
         (runLength(line, '-') == line.size() || runLength(line, '=') == line.size());
}

}  // namespace

std::string nestedBody(std::string_view body) {
  std::string nested;
  nested.reserve(body.size() + 1);
  std::string_view fence;  // that of the code we are in
  bool followsText = false;
  for (std::string_view line : linesOf(body)) {
    if (!fence.empty()) {
      if (closesFence(line, fence)) fence = {};
    } else if (fence = openingFence(line); fence.empty()) {
      if (followsText && underlines(line)) nested += '\n';
      if (const std::string_view marks = headingMarks(line); !marks.empty()) {
        nested.append(line.data(), marks.data());
        nested.append(std::min(ownLevels, deepestLevel - marks.size()), '#');
        line.remove_prefix(static_cast<std::size_t>(marks.data() - line.data()));
      }
    }
    (nested += line) += '\n';
    followsText = fence.empty() && !trimSpaceAndBreaks(line).empty();
  }
  if (body.ends_with('\n')) nested.pop_back();
  if (!fence.empty()) (nested += fence) += '\n';
  return nested;
}

}  // namespace nomely
