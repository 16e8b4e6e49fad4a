#include "Core/Markdown/Text/LinkResultCache.h"

namespace nomely {

LinkResultCache& LinkResultCache::shared() {
  static LinkResultCache cache;
  return cache;
}

LinkResultCache::Links LinkResultCache::get(std::string_view body) {
  const std::scoped_lock hold(lock_);
  const Links* const known = cache_.find(body);
  return known != nullptr ? *known : nullptr;
}

void LinkResultCache::set(Links links, std::string_view body) {
  const std::scoped_lock hold(lock_);
  cache_.store(body, std::move(links));
}

}  // namespace nomely
