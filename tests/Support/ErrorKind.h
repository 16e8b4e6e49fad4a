#pragma once

#include <optional>
#include <utility>

namespace nomely::test {

// The typed case of the `Failure` that `body` throws; absent when it throws nothing. Other
// exceptions pass through.
template <typename Failure, typename Body>
auto kindOf(Body body) -> std::optional<decltype(std::declval<const Failure&>().kind())> {
  try {
    body();
  } catch (const Failure& failure) {
    return failure.kind();
  }
  return std::nullopt;
}

}  // namespace nomely::test
