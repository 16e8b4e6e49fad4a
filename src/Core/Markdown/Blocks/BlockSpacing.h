#pragma once

#include "Core/Markdown/Blocks/MarkdownBlock.h"

namespace nomely {

// Whether two neighbours have no gap between them: items of a list, lines of a poem. Pure.
[[nodiscard]] bool standClose(const MarkdownBlock& above, const MarkdownBlock& below);

}  // namespace nomely
