#pragma once

#include <chrono>
#include <map>
#include <mutex>
#include <utility>

#include "Platform/Concurrency/Timers.h"
#include "Support/ManualClock.h"

namespace nomely::test {

// Timers whose time passes when a test says so, together with a clock's. Calls run on the thread
// that advances them.
class ManualTimers final : public Timers {
 public:
  explicit ManualTimers(ManualClock& clock) : clock_(clock) {}

  [[nodiscard]] Timer after(std::chrono::milliseconds delay, std::function<void()> call) override {
    const std::lock_guard lock(state_->mutex);
    const Key key(clock_.now() + delay, state_->next++);
    state_->calls.emplace(key, std::move(call));
    return {state_.get(), [key, weak = std::weak_ptr(state_)](void*) {
              const auto state = weak.lock();
              if (!state) return;
              decltype(state->calls)::node_type removed;  // goes after the lock
              const std::lock_guard guard(state->mutex);
              removed = state->calls.extract(key);
            }};
  }

  // Also runs what the calls ask for meanwhile.
  void advance(std::chrono::milliseconds by) {
    const Moment end = clock_.now() + by;
    while (auto due = takeDue(end)) {
      if (due->first > clock_.now()) clock_.advance(due->first - clock_.now());
      due->second();
    }
    clock_.advance(end - clock_.now());
  }

  [[nodiscard]] std::size_t waiting() const {
    const std::lock_guard lock(state_->mutex);
    return state_->calls.size();
  }

 private:
  using Key = std::pair<Moment, std::uint64_t>;
  struct State {
    std::mutex mutex;
    std::map<Key, std::function<void()>> calls;
    std::uint64_t next = 0;
  };

  std::optional<std::pair<Moment, std::function<void()>>> takeDue(Moment end) {
    const std::lock_guard lock(state_->mutex);
    const auto first = state_->calls.begin();
    if (first == state_->calls.end() || first->first.first > end) return std::nullopt;
    std::pair due(first->first.first, std::move(first->second));
    state_->calls.erase(first);
    return due;
  }

  ManualClock& clock_;
  std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace nomely::test
