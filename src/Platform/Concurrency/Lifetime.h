#pragma once

#include <atomic>
#include <memory>
#include <utility>

namespace nomely {

// A member of an object to which calls come back later, perhaps after the object is gone:
//
//   executor_.post(lifetime_.guard([this] { finish(); }));
//
// A guarded call does nothing once the lifetime has ended. It must run on the thread that ends it;
// guarding, and copying what is guarded, is safe on any thread.
class Lifetime {
 public:
  Lifetime() = default;
  ~Lifetime() { end(); }
  Lifetime(const Lifetime&) = delete;
  Lifetime& operator=(const Lifetime&) = delete;

  template <typename Call>
  [[nodiscard]] auto guard(Call call) const {
    return [goesOn = std::shared_ptr<const std::atomic<bool>>(goesOn_),
            call = std::move(call)](auto&&... arguments) {
      if (*goesOn) call(std::forward<decltype(arguments)>(arguments)...);
    };
  }

  // For an object whose destruction begins before its members go.
  void end() { *goesOn_ = false; }

 private:
  std::shared_ptr<std::atomic<bool>> goesOn_ = std::make_shared<std::atomic<bool>>(true);
};

}  // namespace nomely
