#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "Platform/Concurrency/Subscription.h"

namespace nomely {

// A value that tells its observers of each assignment. Lives on the main executor alone. A
// subscription may outlive it.
template <typename Value>
class Observable {
 public:
  using Observer = std::function<void(const Value&)>;

  Observable() = default;
  explicit Observable(Value value) : value_(std::move(value)) {}
  Observable(const Observable&) = delete;
  Observable& operator=(const Observable&) = delete;

  [[nodiscard]] const Value& get() const { return value_; }

  // Observers run before this returns, in the order in which they came. One that subscribes or
  // cancels meanwhile takes effect with the next assignment, but a cancelled one is not called.
  void set(Value value) {
    value_ = std::move(value);
    notify();
  }

  // The same for a value that `change` alters in place: a large one is not copied.
  template <typename Change>
  void modify(Change&& change) {
    std::forward<Change>(change)(value_);
    notify();
  }

  // Assigns only a value that differs.
  void setIfChanged(Value value) {
    if (!(value_ == value)) set(std::move(value));
  }

  [[nodiscard]] Subscription observe(Observer observer) const {
    const std::size_t key = observers_->nextKey++;
    observers_->byKey.emplace(key, std::move(observer));
    return Subscription([weak = std::weak_ptr(observers_), key] {
      if (const auto observers = weak.lock()) observers->byKey.erase(key);
    });
  }

 private:
  struct Observers {
    std::map<std::size_t, Observer> byKey;
    std::size_t nextKey = 0;
  };

  void notify() {
    const std::shared_ptr<Observers> observers = observers_;
    std::vector<std::size_t> keys;
    keys.reserve(observers->byKey.size());
    for (const auto& [key, observer] : observers->byKey) keys.push_back(key);
    for (const std::size_t key : keys) {
      const auto found = observers->byKey.find(key);
      if (found == observers->byKey.end()) continue;
      const Observer observer = found->second;
      observer(value_);
    }
  }

  Value value_{};
  std::shared_ptr<Observers> observers_ = std::make_shared<Observers>();
};

// One that everybody may read and observe, and only its owner assigns.
template <typename Owner, typename Value>
class Published : private Observable<Value> {
 public:
  using Observable<Value>::Observable;
  using Observable<Value>::get;
  using Observable<Value>::observe;

 private:
  friend Owner;
};

}  // namespace nomely
