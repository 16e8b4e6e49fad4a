#pragma once

#include <string>
#include <vector>

#include "Platform/System/Uuid.h"

namespace nomely {

// A stretch of a recording with the words spoken in it.
struct AudioTranscriptSegment {
  // Drawn anew whenever a segment is built or read, never stored, and yet part of the comparison:
  // two reads of one file are not equal when it holds a segment.
  Uuid id = Uuid::random();
  std::string text;
  double start = 0;     // seconds from the start of the recording
  double duration = 0;  // seconds

  friend bool operator==(const AudioTranscriptSegment&, const AudioTranscriptSegment&) = default;
};

struct AudioTranscript {
  std::string text;
  std::vector<AudioTranscriptSegment> segments;

  // Whether there is nothing to show: no words, or no segments.
  [[nodiscard]] bool isEmpty() const;

  friend bool operator==(const AudioTranscript&, const AudioTranscript&) = default;
};

}  // namespace nomely
