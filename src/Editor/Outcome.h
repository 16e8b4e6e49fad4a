#pragma once

#include <exception>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include "Platform/Cancellation.h"

namespace nomely {

// What became of work on another thread: its value, or what it threw.
template <typename Value>
struct Outcome {
  std::optional<Value> value;
  std::exception_ptr failure;

  // Whether it was asked to stop: nobody is told of that.
  [[nodiscard]] bool isCancelled() const {
    try {
      if (failure) std::rethrow_exception(failure);
    } catch (const CancellationError&) {
      return true;
    } catch (const std::exception&) {
      return false;
    }
    return false;
  }

  // The failure's text for the user.
  [[nodiscard]] std::string message() const {
    try {
      std::rethrow_exception(failure);
    } catch (const std::exception& error) {
      return error.what();
    }
  }
};

template <typename Work>
[[nodiscard]] auto outcomeOf(Work&& work) -> Outcome<std::invoke_result_t<Work>> {
  try {
    return {std::forward<Work>(work)(), nullptr};
  } catch (const std::exception&) {
    return {std::nullopt, std::current_exception()};
  }
}

}  // namespace nomely
