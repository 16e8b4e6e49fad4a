#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <stop_token>
#include <string>
#include <vector>

#include "AI/Transcription/SpeechRecognizer.h"
#include "Core/Models/AudioTranscript.h"
#include "Platform/Error.h"

namespace nomely {

class TranscriberError : public Error {
 public:
  enum class Kind { recognitionFailed, audioExportFailed, notAuthorized };
  // `detail` is that of the first two.
  explicit TranscriberError(Kind kind, const std::string& detail = {});
  [[nodiscard]] Kind kind() const noexcept { return kind_; }

 private:
  Kind kind_;
};

struct SegmentRange {
  double start = 0;     // seconds
  double duration = 0;  // seconds
  friend bool operator==(const SegmentRange&, const SegmentRange&) = default;
};

struct TranscriptionProgress {
  int current = 1;
  int total = 1;
  // "正在转文字 2/3"
  [[nodiscard]] std::string message() const;
};

struct TranscriptionResult {
  std::string text;
  AudioTranscript transcript;
  int failedSegmentCount = 0;
  int totalSegmentCount = 0;
};

// Turns the speech of a sound file into text with times, in pieces of 55 seconds one after another,
// since recognisers are made for short ones. One call at a time; others wait. Any thread.
class SpeechTranscriber {
 public:
  static constexpr double segmentLength = 55.0;  // seconds

  enum class Authorization { authorized, notDetermined };
  using OnProgress = std::function<void(const TranscriptionProgress&)>;

  // `recognizer` may be null: the user has chosen none. Pieces of sound lie in a folder of their
  // own in `temporaryFolder`, one at a time.
  SpeechTranscriber(std::shared_ptr<SpeechRecognizer> recognizer,
                    std::filesystem::path temporaryFolder)
      : recognizer_(std::move(recognizer)), temporaryFolder_(std::move(temporaryFolder)) {}

  // Sound leaves the program only for a recogniser that the user has chosen.
  [[nodiscard]] Authorization requestAuthorization() const;

  // `onProgress` runs on the caller's thread. Throws TranscriberError, FileError for a file that
  // isn't there, and CancellationError at once when asked to stop.
  [[nodiscard]] TranscriptionResult transcribeWithTimeline(const std::filesystem::path& file,
                                                           const OnProgress& onProgress,
                                                           const std::stop_token& stop);

  // Pieces of at most segmentLength, the first at 0; one of length 0 for a duration that is no
  // number or not positive.
  [[nodiscard]] static std::vector<SegmentRange> segmentRanges(double duration);

 private:
  std::shared_ptr<SpeechRecognizer> recognizer_;
  std::filesystem::path temporaryFolder_;
  std::mutex mutex_;
};

}  // namespace nomely
