#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Markdown/Blocks/MarkdownBlock.h"

namespace nomely {

// What a memo's body is drawn as. Line by line, with a fixed set of blocks; every text has some.
// Pure but for the cache; safe on any thread; time in proportion to the text.
namespace MarkdownTextView {

[[nodiscard]] MarkdownBlocks parseBlocks(std::string_view text);

struct CalloutResult {
  MarkdownCallout callout;
  std::size_t nextIndex = 0;  // the first line after it
};
// The callout that line `startIndex` opens; absent when it opens none.
[[nodiscard]] std::optional<CalloutResult> parseCallout(std::span<const std::string_view> lines,
                                                        std::size_t startIndex);

// The blocks of a body, from the shared cache if it has them. Placeholders of pasted pictures are
// removed first.
[[nodiscard]] std::shared_ptr<const MarkdownBlocks> blocks(std::string_view body);

// The sources of the diagrams, in order.
[[nodiscard]] std::vector<std::string> mermaidCodes(std::string_view text);

}  // namespace MarkdownTextView

}  // namespace nomely
