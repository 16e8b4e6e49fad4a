#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <string_view>

#include "Core/Extensions/LruCache.h"
#include "Core/Markdown/Blocks/MarkdownBlock.h"
#include "Core/Markdown/Text/StyledText.h"

namespace nomely {

// LRU caches of the parse results of texts. Safe on any thread.
class MarkdownRenderCache {
 public:
  using Blocks = std::shared_ptr<const MarkdownBlocks>;
  using Styled = std::shared_ptr<const StyledText>;

  static constexpr std::size_t maxBlockEntries = 240;
  static constexpr std::size_t maxAttributedEntries = 640;

  // The one of this process.
  [[nodiscard]] static MarkdownRenderCache& shared();

  // The cached blocks of `text`, or what `build` returns, which is then cached. `build` runs
  // without the lock: two threads may build the same text at once, and the later result is kept.
  template <typename Build>
  [[nodiscard]] Blocks blocks(std::string_view text, Build build) {
    if (Blocks known = knownBlocks(text)) return known;
    auto built = std::make_shared<const MarkdownBlocks>(build());
    storeBlocks(built, text);
    return built;
  }

  // Null when nothing is cached for that text in that colour.
  [[nodiscard]] Styled attributed(std::string_view text, std::string_view colorKey);
  void storeAttributed(Styled styled, std::string_view text, std::string_view colorKey);

 private:
  [[nodiscard]] Blocks knownBlocks(std::string_view text);
  void storeBlocks(Blocks built, std::string_view text);

  std::mutex lock_;
  LruCache<Blocks> blockCache_{maxBlockEntries};
  LruCache<Styled> attributedCache_{maxAttributedEntries};
};

}  // namespace nomely
