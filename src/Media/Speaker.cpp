#include "Media/Speaker.h"

#include <algorithm>

#include "Media/Failure.h"
#include "Media/SoundDevice.h"

namespace nomely::media {

Speaker::Speaker(const std::string& device)
    : pcm_(openDevice(device, {.direction = SND_PCM_STREAM_PLAYBACK,
                               .channels = playedChannels,
                               .rate = playedRate,
                               .latency = 150'000})) {}

Speaker::~Speaker() {
  ::snd_pcm_drop(pcm_);
  ::snd_pcm_close(pcm_);
}

void Speaker::write(std::span<const std::int16_t> samples) {
  while (!samples.empty()) {
    const snd_pcm_sframes_t count =
        ::snd_pcm_writei(pcm_, samples.data(), samples.size() / playedChannels);
    if (count == 0) throw Failure("deviceLost", "nothing is taken");
    if (count > 0) samples = samples.subspan(static_cast<std::size_t>(count) * playedChannels);
    // Samples that came too late, or a machine that slept.
    else if (::snd_pcm_recover(pcm_, static_cast<int>(count), 1) < 0)
      throw Failure("deviceLost", ::snd_strerror(static_cast<int>(count)));
  }
}

void Speaker::drop() {
  ::snd_pcm_drop(pcm_);
  ::snd_pcm_prepare(pcm_);
}

void Speaker::drain() {
  ::snd_pcm_drain(pcm_);
}

double Speaker::delay() const {
  snd_pcm_sframes_t frames = 0;
  if (::snd_pcm_delay(pcm_, &frames) < 0) return 0;
  return static_cast<double>(std::max<snd_pcm_sframes_t>(frames, 0)) / playedRate;
}

}  // namespace nomely::media
