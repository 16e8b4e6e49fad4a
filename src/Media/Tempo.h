#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "Media/PlayedForm.h"

namespace nomely::media {

// Makes sound in the form of PlayedForm.h faster or slower and leaves its pitch: short pieces of it
// are laid over one another, closer or further apart than they were, each where it fits best.
class Tempo {
 public:
  // `speed` 2 halves the duration.
  explicit Tempo(double speed) : speed_(speed) {}

  // What can be played now that `samples` have come. It is valid until the next call.
  [[nodiscard]] std::span<const std::int16_t> convert(std::span<const std::int16_t> samples);
  // What is left at the end.
  [[nodiscard]] std::span<const std::int16_t> finish();

 private:
  // In frames.
  static constexpr std::size_t piece = playedRate * 50 / 1000;
  static constexpr std::size_t overlap = playedRate * 10 / 1000;
  static constexpr std::size_t reach = playedRate * 15 / 1000;  // in which a piece is looked for

  [[nodiscard]] std::size_t bestPlace() const;
  void layPiece(std::size_t place);

  double speed_;
  double skipped_ = 0;  // frames of a fraction
  std::vector<std::int16_t> input_;
  std::vector<std::int16_t> output_;
  std::vector<std::int16_t> tail_;  // what the next piece is laid over
};

}  // namespace nomely::media
