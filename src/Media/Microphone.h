#pragma once

#include <cstdint>
#include <span>
#include <string>

#include <alsa/asoundlib.h>

namespace nomely::media {

// A device of ALSA's that gives samples of one channel, `recordingRate` of them a second. One
// thread.
class Microphone {
 public:
  // Throws Failure: deviceMissing, deviceBusy, deviceRefused.
  explicit Microphone(const std::string& device);
  ~Microphone();
  Microphone(const Microphone&) = delete;
  Microphone& operator=(const Microphone&) = delete;

  // Waits for samples and returns how many there are. Throws Failure deviceLost.
  [[nodiscard]] std::size_t read(std::span<std::int16_t> samples);

 private:
  snd_pcm_t* pcm_;
};

}  // namespace nomely::media
