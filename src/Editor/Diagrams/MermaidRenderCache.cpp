#include "Editor/Diagrams/MermaidRenderCache.h"

#include <utility>

namespace nomely {

MermaidRenderCache& MermaidRenderCache::shared(DiagramLook look) {
  static MermaidRenderCache light;
  static MermaidRenderCache dark;
  return look == DiagramLook::dark ? dark : light;
}

std::optional<std::string> MermaidRenderCache::svg(std::string_view code) const {
  const std::lock_guard lock(mutex_);
  const auto found = storage_.find(code);
  if (found == storage_.end()) return std::nullopt;
  return found->second;
}

void MermaidRenderCache::store(std::string svg, std::string_view code) {
  const std::lock_guard lock(mutex_);
  if (const auto known = storage_.find(code); known != storage_.end()) {
    known->second = std::move(svg);
    return;
  }
  if (storage_.size() == limit) {
    storage_.erase(insertionOrder_.front());
    insertionOrder_.pop_front();
  }
  insertionOrder_.emplace_back(code);
  storage_.emplace(code, std::move(svg));
}

}  // namespace nomely
