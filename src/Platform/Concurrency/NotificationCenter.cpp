#include "Platform/Concurrency/NotificationCenter.h"

#include <vector>

namespace nomely {

NotificationCenter& NotificationCenter::shared() {
  static NotificationCenter center;
  return center;
}

bool NotificationCenter::post(std::string_view name, const std::string& payload) {
  std::vector<std::shared_ptr<Observer>> called;
  {
    const std::lock_guard lock(mutex_);
    const auto [begin, end] = observers_.equal_range(name);
    for (auto at = begin; at != end; ++at) called.push_back(at->second);
  }
  for (const auto& observer : called) (*observer)(payload);
  return !called.empty();
}

Subscription NotificationCenter::observe(std::string_view name, Observer observer) {
  const std::lock_guard lock(mutex_);
  const auto place =
      observers_.emplace(std::string(name), std::make_shared<Observer>(std::move(observer)));
  return Subscription([this, place] {
    const std::lock_guard guard(mutex_);
    observers_.erase(place);
  });
}

}  // namespace nomely
