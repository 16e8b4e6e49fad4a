#pragma once

#include <cstddef>
#include <list>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace nomely {

// An LRU cache from texts to values: storing to a full one drops the least recently used value. For
// one thread at a time.
template <typename Value>
class LruCache {
 public:
  explicit LruCache(std::size_t most) : most_(most) {}

  // Null when nothing is stored for `key`. Counts as a use of the value.
  [[nodiscard]] const Value* find(std::string_view key) {
    const auto found = entries_.find(key);
    if (found == entries_.end()) return nullptr;
    order_.splice(order_.end(), order_, found->second);
    return &found->second->second;
  }

  // Stores `value` for `key`, replacing an earlier one. Counts as a use.
  void store(std::string_view key, Value value) {
    if (const auto found = entries_.find(key); found != entries_.end()) {
      found->second->second = std::move(value);
      order_.splice(order_.end(), order_, found->second);
      return;
    }
    const auto entry = order_.emplace(order_.end(), std::string(key), std::move(value));
    entries_.emplace(entry->first, entry);
    if (entries_.size() > most_) {
      entries_.erase(order_.front().first);
      order_.pop_front();
    }
  }

 private:
  using Order = std::list<std::pair<const std::string, Value>>;

  std::size_t most_;
  Order order_;  // least recently used first
  std::unordered_map<std::string_view, typename Order::iterator> entries_;
};

}  // namespace nomely
