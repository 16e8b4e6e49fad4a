#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace nomely::test {

// A WAV file of silence, 16 kHz, mono; its samples are a hole that takes no room on the disk.
void writeSilence(const std::filesystem::path& file, double seconds);

// A WAV file with a tone of 440 Hz on each channel.
struct Tone {
  unsigned rate = 16000;
  unsigned channels = 1;
  unsigned seconds = 1;
};
void writeTone(const std::filesystem::path& file, const Tone& tone);

// A device of ALSA's that hears what a test plays to it, as long as this lives. Programs started
// meanwhile by this process find it under `name`.
class PlayedMicrophone {
 public:
  static constexpr auto name = "played";

  explicit PlayedMicrophone(const std::filesystem::path& folder);
  ~PlayedMicrophone();
  PlayedMicrophone(const PlayedMicrophone&) = delete;
  PlayedMicrophone& operator=(const PlayedMicrophone&) = delete;

  // Returns when all but the last moment of it was heard.
  void play(double seconds) const;
  // What ALSA_CONFIG_PATH has to be.
  [[nodiscard]] const std::filesystem::path& configuration() const { return configuration_; }

 private:
  std::filesystem::path configuration_;
  int pipe_ = -1;
};

// The usual device of ALSA's for programs started meanwhile by this process: it takes no more sound
// than a test hears.
class HeardSpeaker {
 public:
  static constexpr std::size_t rate = 48000;  // frames a second, of two samples

  explicit HeardSpeaker(const std::filesystem::path& folder);
  ~HeardSpeaker();
  HeardSpeaker(const HeardSpeaker&) = delete;
  HeardSpeaker& operator=(const HeardSpeaker&) = delete;

  // Hears on until `isEnough`, and returns the samples. Throws when that takes too long.
  std::vector<std::int16_t> hearUntil(
      const std::function<bool(std::size_t samples)>& isEnough) const;
  std::vector<std::int16_t> hear(double seconds) const;

 private:
  int pipe_ = -1;
};

// The processes that `parent` has started and that still run.
[[nodiscard]] std::vector<pid_t> childrenOf(pid_t parent);

}  // namespace nomely::test
