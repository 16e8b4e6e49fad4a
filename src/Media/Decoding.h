#pragma once

namespace nomely::media {

// Seconds of sound that the file on `source` has, counted rather than believed.
[[nodiscard]] double durationOf(int source);

// Writes all its sound to `output` as 16 kHz mono, 16-bit samples of the machine's byte order; gaps
// in its timeline become silence. Memory does not grow with its length. Throws Failure.
void decode(int source, int output);

}  // namespace nomely::media
