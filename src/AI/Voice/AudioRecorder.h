#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "AI/Voice/LockedRecording.h"
#include "Platform/Audio/AudioCapture.h"
#include "Platform/Time/Clock.h"

namespace nomely {

class RecorderError : public Error {
 public:
  enum class Kind { setupFailed, alreadyRecording, notRecording };
  // `detail` is that of setupFailed.
  explicit RecorderError(Kind kind, const std::string& detail = {});
  [[nodiscard]] Kind kind() const noexcept { return kind_; }

 private:
  Kind kind_;
};

// Records the microphone to files. One recording at a time; calls wait for each other. Besides what
// they name, calls throw FileError. Safe on any thread.
class AudioRecorder {
 public:
  static constexpr auto usualDevice = "default";

  AudioRecorder(AudioCapture& capture, const Clock& clock) : capture_(capture), clock_(clock) {}

  // Begins a file in `directory` and returns its path. Throws RecorderError setupFailed and
  // alreadyRecording.
  std::filesystem::path startRecording(const std::filesystem::path& directory,
                                       const std::string& device = usualDevice,
                                       const AudioCapture::OnStatus& onStatus = {});
  // Returns the path of the recording, which is a usual m4a file and on the disk; where it couldn't
  // be made one it is still a file that plays. It stays locked until `letGo`, the next recording,
  // or the end of this object. Throws RecorderError notRecording.
  std::filesystem::path stopRecording();
  // False when there is nothing to pause or to go on with, the device being gone for example.
  bool pauseRecording() { return setPaused(true); }
  bool resumeRecording() { return setPaused(false); }
  // Stops and deletes the file. Nothing happens when none is recorded.
  void cancelRecording();

  // Deletes the file that was recorded last, which is in a memo by now. A failure is logged.
  void discardRecording() noexcept;
  // Unlocks it: the next look for recordings left behind finds it.
  void letGo();

  [[nodiscard]] CaptureStatus status() const;

 private:
  bool setPaused(bool isPaused);

  AudioCapture& capture_;
  const Clock& clock_;
  mutable std::mutex mutex_;
  std::unique_ptr<AudioCapture::Session> session_;
  std::optional<LockedRecording> recording_;
};

}  // namespace nomely
