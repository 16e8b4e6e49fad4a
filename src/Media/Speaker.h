#pragma once

#include <cstdint>
#include <span>
#include <string>

#include <alsa/asoundlib.h>

#include "Media/PlayedForm.h"

namespace nomely::media {

// A device of ALSA's that plays samples in the form of PlayedForm.h. One thread.
class Speaker {
 public:
  // Throws Failure: deviceMissing, deviceBusy, deviceRefused.
  explicit Speaker(const std::string& device);
  ~Speaker();
  Speaker(const Speaker&) = delete;
  Speaker& operator=(const Speaker&) = delete;

  // Waits until the device has taken them. Throws Failure deviceLost.
  void write(std::span<const std::int16_t> samples);
  // Forgets what was written and is not heard yet.
  void drop();
  // Returns when all that was written was heard.
  void drain();
  // Seconds that were written and are not heard yet.
  [[nodiscard]] double delay() const;

 private:
  snd_pcm_t* pcm_;
};

}  // namespace nomely::media
