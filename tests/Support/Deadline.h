#pragma once

#include <chrono>
#include <future>
#include <stdexcept>

namespace nomely::test {

// What another thread sets. A test fails instead of waiting for ever.
template <typename Value>
Value inTime(std::promise<Value>& promise) {
  std::future<Value> future = promise.get_future();
  if (future.wait_for(std::chrono::seconds(30)) != std::future_status::ready)
    throw std::runtime_error("nothing came in time");
  return future.get();
}

}  // namespace nomely::test
