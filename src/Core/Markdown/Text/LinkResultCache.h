#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

#include "Core/Extensions/LruCache.h"
#include "Core/Markdown/Text/DetectedLink.h"

namespace nomely {

// An LRU cache of the links of bodies. Safe on any thread.
class LinkResultCache {
 public:
  using Links = std::shared_ptr<const std::vector<DetectedLink>>;

  static constexpr std::size_t maxEntries = 200;

  // The one of this process.
  [[nodiscard]] static LinkResultCache& shared();

  // Null when nothing is cached for `body`.
  [[nodiscard]] Links get(std::string_view body);
  void set(Links links, std::string_view body);

 private:
  std::mutex lock_;
  LruCache<Links> cache_{maxEntries};
};

}  // namespace nomely
