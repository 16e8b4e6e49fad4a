#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace nomely {

// How playing goes.
struct PlaybackStatus {
  double position = 0;  // seconds from the beginning of the file, of what is heard
  bool isPaused = false;
  bool hasEnded = false;
  std::string failure = {};  // why it ended, in Chinese; empty at the end of the file

  friend bool operator==(const PlaybackStatus&, const PlaybackStatus&) = default;
};

// Plays files of sound on a speaker.
class AudioPlayback {
 public:
  static constexpr double slowest = 0.5;
  static constexpr double fastest = 2;

  struct Request {
    std::filesystem::path file;
    double from = 0;   // seconds
    double speed = 1;  // the pitch stays
  };

  // A file that is played. Calls return at once, before they have an effect; after its end they
  // have none. Destruction stops it and returns when the speaker is silent; no status comes after
  // that.
  class Session {
   public:
    virtual ~Session() = default;
    virtual void setPaused(bool isPaused) = 0;
    virtual void seek(double seconds) = 0;
    virtual void setSpeed(double speed) = 0;
  };

  // Called on a thread of the session's several times a second; it may call nothing of the session.
  using OnStatus = std::function<void(const PlaybackStatus&)>;

  virtual ~AudioPlayback() = default;
  // Returns at once; what keeps it from playing is told as a failure.
  [[nodiscard]] virtual std::unique_ptr<Session> start(const Request& request,
                                                       OnStatus onStatus) = 0;
};

// ALSA's usual device, in a process of its own.
[[nodiscard]] std::unique_ptr<AudioPlayback> makeAudioPlayback();

}  // namespace nomely
