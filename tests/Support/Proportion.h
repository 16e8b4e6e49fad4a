#pragma once

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <limits>

#include <gtest/gtest.h>

namespace nomely::test {

// Expects that `work(2 * size)` takes no more than in proportion to `work(size)`: what is quadratic
// takes four times as long. Judged by this process's own time, and the best of several tries.
template <typename Work>
void expectProportional(std::size_t size, Work work) {
  constexpr double noise = 0.02;  // seconds
  const auto secondsOf = [&](std::size_t amount) {
    const std::clock_t start = std::clock();
    work(amount);
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
  };
  double once = std::numeric_limits<double>::max();
  double twice = once;
  for (int tries = 0; tries < 5; ++tries) {
    once = std::min(once, secondsOf(size));
    twice = std::min(twice, secondsOf(2 * size));
    if (twice < 3 * once + noise) return;
  }
  ADD_FAILURE() << once << " s, and " << twice << " s for twice as much";
}

}  // namespace nomely::test
