#include "Desktop/Pictures/PictureCache.h"

#include <iterator>

namespace nomely {

std::optional<QImage> PictureCache::find(const std::string& key) {
  const std::lock_guard lock(mutex_);
  const auto found = byKey_.find(key);
  if (found == byKey_.end()) return std::nullopt;
  entries_.splice(entries_.begin(), entries_, found->second);
  return found->second->image;
}

void PictureCache::insert(const std::string& key, const QImage& image) {
  constexpr std::size_t largestShare = 4;
  const std::lock_guard lock(mutex_);
  if (bytesOf(image) > mostBytes_ / largestShare) return;
  if (const auto found = byKey_.find(key); found != byKey_.end()) drop(found->second);
  entries_.push_front({key, image});
  byKey_.emplace(key, entries_.begin());
  bytes_ += bytesOf(image);
  while (bytes_ > mostBytes_) drop(std::prev(entries_.end()));
}

std::size_t PictureCache::bytes() const {
  const std::lock_guard lock(mutex_);
  return bytes_;
}

std::size_t PictureCache::bytesOf(const QImage& image) {
  return static_cast<std::size_t>(image.sizeInBytes());
}

void PictureCache::drop(Entries::iterator entry) {
  bytes_ -= bytesOf(entry->image);
  byKey_.erase(entry->key);
  entries_.erase(entry);
}

}  // namespace nomely
