#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Error.h"

namespace nomely {

// How a recording goes.
struct CaptureStatus {
  double seconds = 0;  // recorded
  double level = 0;    // the loudest of the last moment, 0 to 1
  bool isPaused = false;
  bool hasEnded = false;
  std::string failure = {};  // why it ended by itself, in Chinese; empty when it was told to
};

// Records from a microphone.
class AudioCapture {
 public:
  // It can't be used; `what()` says why in Chinese.
  class DeviceError : public Error {
   public:
    enum class Kind { missing, busy, other };
    DeviceError(Kind kind, const std::string& text) : Error("capture", text), kind_(kind) {}
    [[nodiscard]] Kind kind() const noexcept { return kind_; }

   private:
    Kind kind_;
  };

  // A recording under way. Destruction stops it; what was recorded stays. Safe on any thread.
  class Session {
   public:
    virtual ~Session() = default;
    // Returns when that holds, or the recording has ended.
    virtual void setPaused(bool isPaused) = 0;
    // Returns when everything that was said is in the file and on the disk.
    virtual void stop() = 0;
    // Returns when nothing more is written.
    virtual void cancel() = 0;
    [[nodiscard]] virtual CaptureStatus status() const = 0;
  };

  using OnStatus = std::function<void(const CaptureStatus&)>;

  virtual ~AudioCapture() = default;
  // Records into `file`, an empty file whose descriptor is the caller's and which the recorder
  // holds open as long as it writes; whatever ends it, what was recorded up to a second before can
  // be played. Returns when the device is open. `onStatus` is called on a thread of the session's
  // several times a second; it may call nothing of the session. Throws DeviceError.
  [[nodiscard]] virtual std::unique_ptr<Session> start(const std::string& device, int file,
                                                       OnStatus onStatus) = 0;
};

// ALSA's devices, MPEG-4 AAC, in a process of its own.
[[nodiscard]] std::unique_ptr<AudioCapture> makeAudioCapture();

}  // namespace nomely
