#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "CLI/Terminal.h"
#include "Core/Markdown/Blocks/MarkdownBlock.h"

namespace nomely {

// Markdown as a terminal shows it. Nothing in a text can drive the terminal.
namespace MarkdownDrawing {

// Blocks, one or more lines each, ending in a line feed; nothing for none. Tables and rules keep to
// `width` columns where they can; other lines are left to the terminal to break.
[[nodiscard]] std::string draw(const MarkdownBlocks& blocks, const Style& style, std::size_t width);

// A memo's body as its card shows it: without what is kept in it for machines.
[[nodiscard]] std::string drawBody(std::string_view body, const Style& style, std::size_t width);

}  // namespace MarkdownDrawing

}  // namespace nomely
