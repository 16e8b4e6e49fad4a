#pragma once

#include <functional>
#include <utility>

namespace nomely {

// Ends an observation when it is destroyed or cancelled.
class Subscription {
 public:
  Subscription() = default;
  explicit Subscription(std::function<void()> cancel) : cancel_(std::move(cancel)) {}
  ~Subscription() { cancel(); }
  Subscription(Subscription&& other) noexcept : cancel_(std::exchange(other.cancel_, nullptr)) {}
  Subscription& operator=(Subscription&& other) noexcept {
    cancel();
    cancel_ = std::exchange(other.cancel_, nullptr);
    return *this;
  }

  void cancel() {
    if (const auto end = std::exchange(cancel_, nullptr)) end();
  }

 private:
  std::function<void()> cancel_;
};

}  // namespace nomely
