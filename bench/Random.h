#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace nomely::bench {

// Pseudo-random numbers that are the same on every machine, which the distributions of the
// standard library are not. (SplitMix64.)
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}
  // A stream of its own for each purpose and index under one seed.
  Random(std::uint64_t seed, std::uint64_t purpose, std::uint64_t index)
      : state_(mix(mix(seed + purpose * step) + index * step)) {}

  std::uint64_t next() { return mix(state_ += step); }
  // Below `bound`, which is not 0.
  std::uint32_t below(std::uint32_t bound) {
    return static_cast<std::uint32_t>(((next() >> 32U) * bound) >> 32U);
  }
  // Both ends included.
  std::uint32_t between(std::uint32_t least, std::uint32_t most) {
    return least + below(most - least + 1);
  }
  bool percent(std::uint32_t chance) { return below(100) < chance; }
  bool oneIn(std::uint32_t bound) { return below(bound) == 0; }

  template <typename Range>
  const auto& pick(const Range& values) {
    return values[below(static_cast<std::uint32_t>(std::size(values)))];
  }

 private:
  static constexpr std::uint64_t step = 0x9E3779B97F4A7C15U;

  static std::uint64_t mix(std::uint64_t value) {
    value = (value ^ (value >> 30U)) * 0xBF58476D1CE4E5B9U;
    value = (value ^ (value >> 27U)) * 0x94D049BB133111EBU;
    return value ^ (value >> 31U);
  }

  std::uint64_t state_;
};

// Draws ranks the way words come up in texts: the n-th most frequent about 1/n as often as the
// first. Integers only, so that no machine rounds differently.
class Zipf {
 public:
  explicit Zipf(std::size_t size) {
    cumulative_.reserve(size);
    std::uint64_t total = 0;
    for (std::size_t rank = 0; rank < size; ++rank)
      cumulative_.push_back(total += (std::uint64_t{1} << 32U) / (rank + flatness));
  }

  std::size_t draw(Random& random) const {
    // 2^64 is so much more than the total that the remainder favours nobody noticeably.
    const std::uint64_t at = random.next() % cumulative_.back();
    return static_cast<std::size_t>(std::ranges::upper_bound(cumulative_, at) -
                                    cumulative_.begin());
  }

 private:
  static constexpr std::size_t flatness = 3;  // the very first ranks don't drown the rest

  std::vector<std::uint64_t> cumulative_;
};

}  // namespace nomely::bench
