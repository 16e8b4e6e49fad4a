#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "Media/SourceFile.h"

namespace nomely::media {

// Of 16 bits, one channel.
using Samples = std::span<const std::int16_t>;
using SampleSink = std::function<void(Samples)>;

// The sound of a foreign file. Its memory does not grow with the file.
class SoundDecoder {
 public:
  // Throws Failure, like `run`.
  explicit SoundDecoder(int source);

  // Samples a second that the file says it has.
  [[nodiscard]] int rate() const;
  // Gives `sink` all of it at `rate` samples a second, once; gaps in its timeline become silence.
  void run(int rate, const SampleSink& sink);

 private:
  SourceFile file_;
  Codec codec_;
};

// Seconds of sound that the file on `source` has, counted rather than believed.
[[nodiscard]] double durationOf(int source);

// Writes all its sound to `output` as 16 kHz mono, 16-bit samples of the machine's byte order.
// Throws Failure.
void decode(int source, int output);

}  // namespace nomely::media
