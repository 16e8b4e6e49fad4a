#include "Media/Microphone.h"

#include "Media/Failure.h"
#include "Media/RecordingFile.h"
#include "Media/SoundDevice.h"

namespace nomely::media {

Microphone::Microphone(const std::string& device)
    : pcm_(openDevice(device, {.direction = SND_PCM_STREAM_CAPTURE,
                               .channels = 1,
                               .rate = recordingRate,
                               .latency = 500'000})) {}

Microphone::~Microphone() {
  ::snd_pcm_close(pcm_);
}

std::size_t Microphone::read(std::span<std::int16_t> samples) {
  for (;;) {
    const snd_pcm_sframes_t count = ::snd_pcm_readi(pcm_, samples.data(), samples.size());
    if (count > 0) return static_cast<std::size_t>(count);
    if (count == 0) throw Failure("deviceLost", "no more samples");
    // A reader that came too late, or a machine that slept.
    if (::snd_pcm_recover(pcm_, static_cast<int>(count), 1) < 0)
      throw Failure("deviceLost", ::snd_strerror(static_cast<int>(count)));
  }
}

}  // namespace nomely::media
