#pragma once

#include <string>

#include <alsa/asoundlib.h>

namespace nomely::media {

// What is asked of a device of ALSA's: samples of 16 bits.
struct DeviceForm {
  snd_pcm_stream_t direction;
  unsigned channels;
  unsigned rate;     // samples a second
  unsigned latency;  // microseconds that the device itself can hold
};

// Opens a device whose calls wait; the caller closes it. A bare one is converted to. Throws
// Failure: deviceMissing, deviceBusy, deviceRefused.
[[nodiscard]] snd_pcm_t* openDevice(const std::string& device, const DeviceForm& form);

}  // namespace nomely::media
