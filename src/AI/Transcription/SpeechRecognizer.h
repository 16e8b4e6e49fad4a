#pragma once

#include <filesystem>
#include <stop_token>
#include <string>
#include <vector>

#include "Core/Models/AudioTranscript.h"

namespace nomely {

// What was heard in a piece of sound; times count from its beginning.
struct Recognition {
  std::string text;
  std::vector<AudioTranscriptSegment> segments;
};

// Hears words. Throws Error with a Chinese text, and CancellationError at once when asked to stop.
// Safe on any thread.
class SpeechRecognizer {
 public:
  virtual ~SpeechRecognizer() = default;
  // Whether it can be asked at all.
  [[nodiscard]] virtual bool isAvailable() const = 0;
  // `file` is a WAV file of one channel with 16 000 samples a second, each of 16 bits, not much
  // longer than a minute.
  [[nodiscard]] virtual Recognition recognize(const std::filesystem::path& file,
                                              const std::stop_token& stop) = 0;
};

}  // namespace nomely
