#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "Media/SourceFile.h"

namespace nomely::media {

// Of 16 bits; those of several channels take turns.
using Samples = std::span<const std::int16_t>;
using SampleSink = std::function<void(Samples)>;

// What a file's sound is to be turned into.
struct SoundForm {
  int rate;  // samples a second, of each channel
  int channels = 1;
  double from = 0;  // seconds that are left out at the beginning
};

// The sound of a foreign file. Its memory does not grow with the file.
class SoundDecoder {
 public:
  // Throws Failure, like `run`.
  explicit SoundDecoder(int source);

  // Samples a second that the file says it has.
  [[nodiscard]] int rate() const;
  // Gives `sink` all of it in that form, once; gaps in its timeline become silence.
  void run(const SoundForm& form, const SampleSink& sink);

 private:
  SourceFile file_;
  Codec codec_;
};

// Seconds of sound that the file on `source` has, counted rather than believed.
[[nodiscard]] double durationOf(int source);

// How loud a sound is over its time.
struct SoundShape {
  double seconds = 0;
  std::vector<float> peaks;  // of equal parts, 0 to 1
};
// Of a sound cut into `parts`. Throws Failure.
[[nodiscard]] SoundShape shapeOf(int source, std::size_t parts);

// Writes all its sound to `output` as 16-bit samples of the machine's byte order. Throws Failure.
void decode(int source, const SoundForm& form, int output);

}  // namespace nomely::media
