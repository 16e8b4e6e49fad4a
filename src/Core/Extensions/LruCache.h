#pragma once

#include <cstddef>
#include <list>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace nomely {

// An LRU cache from texts to values: when it is full, the value not used for longest goes. For one
// thread at a time.
template <typename Value>
class LruCache {
 public:
  explicit LruCache(std::size_t most) : most_(most) {}

  // Null for a text that is not here. One asked for stays longer than those that weren't.
  [[nodiscard]] const Value* find(std::string_view key) {
    const auto found = entries_.find(key);
    if (found == entries_.end()) return nullptr;
    order_.splice(order_.end(), order_, found->second);
    return &found->second->second;
  }

  // In place of the value that is there.
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
  Order order_;  // the one to go first comes first
  std::unordered_map<std::string_view, typename Order::iterator> entries_;
};

}  // namespace nomely
