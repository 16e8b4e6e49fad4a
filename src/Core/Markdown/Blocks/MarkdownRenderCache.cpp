#include "Core/Markdown/Blocks/MarkdownRenderCache.h"

#include <string>

namespace nomely {
namespace {

std::string keyOf(std::string_view text, std::string_view colorKey) {
  return std::string(text)
      .append(
          "\x1F"
          "color:")
      .append(colorKey);
}

}  // namespace

MarkdownRenderCache& MarkdownRenderCache::shared() {
  static MarkdownRenderCache cache;
  return cache;
}

MarkdownRenderCache::Blocks MarkdownRenderCache::knownBlocks(std::string_view text) {
  const std::scoped_lock hold(lock_);
  const Blocks* const known = blockCache_.find(text);
  return known != nullptr ? *known : nullptr;
}

void MarkdownRenderCache::storeBlocks(Blocks built, std::string_view text) {
  const std::scoped_lock hold(lock_);
  blockCache_.store(text, std::move(built));
}

MarkdownRenderCache::Styled MarkdownRenderCache::attributed(std::string_view text,
                                                            std::string_view colorKey) {
  const std::string key = keyOf(text, colorKey);
  const std::scoped_lock hold(lock_);
  const Styled* const known = attributedCache_.find(key);
  return known != nullptr ? *known : nullptr;
}

void MarkdownRenderCache::storeAttributed(Styled styled, std::string_view text,
                                          std::string_view colorKey) {
  const std::string key = keyOf(text, colorKey);
  const std::scoped_lock hold(lock_);
  attributedCache_.store(key, std::move(styled));
}

}  // namespace nomely
