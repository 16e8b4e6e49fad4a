#include "Media/Tempo.h"

#include <algorithm>
#include <cmath>

namespace nomely::media {
namespace {

constexpr auto channels = static_cast<std::size_t>(playedChannels);

}  // namespace

std::span<const std::int16_t> Tempo::convert(std::span<const std::int16_t> samples) {
  output_.clear();
  if (speed_ == 1) {
    output_.assign(samples.begin(), samples.end());
    return output_;
  }
  input_.insert(input_.end(), samples.begin(), samples.end());
  const auto step = static_cast<double>(piece - overlap) * speed_;
  // What the longest step and the best place after it reach.
  const auto needed = std::max(piece + reach, static_cast<std::size_t>(step) + 1) * channels;
  std::size_t begin = 0;
  while (input_.size() - begin >= needed) {
    input_.erase(input_.begin(), input_.begin() + static_cast<std::ptrdiff_t>(begin));
    layPiece(tail_.empty() ? 0 : bestPlace());
    skipped_ += step;
    const double whole = std::floor(skipped_);
    skipped_ -= whole;
    begin = static_cast<std::size_t>(whole) * channels;
  }
  input_.erase(input_.begin(), input_.begin() + static_cast<std::ptrdiff_t>(begin));
  return output_;
}

std::span<const std::int16_t> Tempo::finish() {
  output_.clear();
  output_.swap(tail_);
  return output_;
}

// Where the input is most like the tail.
std::size_t Tempo::bestPlace() const {
  constexpr std::size_t placeStep = 8;
  constexpr std::size_t frameStep = 4;
  std::size_t best = 0;
  double bestLikeness = -1;
  for (std::size_t place = 0; place < reach; place += placeStep) {
    double product = 0;
    double energy = 1;
    for (std::size_t frame = 0; frame < overlap; frame += frameStep) {
      const double sample = input_[(place + frame) * channels];
      product += sample * tail_[frame * channels];
      energy += sample * sample;
    }
    const double likeness = product / std::sqrt(energy);
    if (place == 0 || likeness > bestLikeness) {
      best = place;
      bestLikeness = likeness;
    }
  }
  return best;
}

void Tempo::layPiece(std::size_t place) {
  const auto from = input_.begin() + static_cast<std::ptrdiff_t>(place * channels);
  const auto faded = static_cast<std::ptrdiff_t>(tail_.size());
  for (std::ptrdiff_t i = 0; i < faded; ++i) {
    const double share = static_cast<double>(i) / static_cast<double>(faded);
    output_.push_back(static_cast<std::int16_t>(
        std::lround(tail_[static_cast<std::size_t>(i)] * (1 - share) + from[i] * share)));
  }
  const auto end = from + static_cast<std::ptrdiff_t>((piece - overlap) * channels);
  output_.insert(output_.end(), from + faded, end);
  tail_.assign(end, end + static_cast<std::ptrdiff_t>(overlap * channels));
}

}  // namespace nomely::media
