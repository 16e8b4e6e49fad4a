#include "Core/Markdown/Text/LinkResultCache.h"

namespace nomely {

LinkResultCache& LinkResultCache::shared() {
  static LinkResultCache cache;
  return cache;
}

LinkResultCache::Links LinkResultCache::get(std::string_view body) {
  const std::scoped_lock hold(lock_);
  const auto found = cache_.find(body);
  if (found == cache_.end()) return nullptr;
  order_.splice(order_.end(), order_, found->second);
  return found->second->links;
}

void LinkResultCache::set(Links links, std::string_view body) {
  const std::scoped_lock hold(lock_);
  if (const auto found = cache_.find(body); found != cache_.end()) {
    found->second->links = std::move(links);
    order_.splice(order_.end(), order_, found->second);
    return;
  }
  const auto entry = order_.insert(order_.end(), {std::string(body), std::move(links)});
  cache_.emplace(entry->body, entry);
  if (cache_.size() > maxEntries) {
    cache_.erase(order_.front().body);
    order_.pop_front();
  }
}

}  // namespace nomely
