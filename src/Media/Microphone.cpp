#include "Media/Microphone.h"

#include <cerrno>

#include "Media/Failure.h"
#include "Media/RecordingFile.h"

namespace nomely::media {
namespace {

constexpr unsigned latency = 500'000;  // microseconds that the device itself can hold

void beSilent(const char*, int, const char*, int, const char*, ...) {}

// Null when the device is there but can't give what is asked for.
snd_pcm_t* open(const std::string& device) {
  snd_pcm_t* pcm = nullptr;
  // A busy device would otherwise be waited for.
  const int opened = ::snd_pcm_open(&pcm, device.c_str(), SND_PCM_STREAM_CAPTURE, SND_PCM_NONBLOCK);
  if (opened == -EBUSY || opened == -EAGAIN) throw Failure("deviceBusy", ::snd_strerror(opened));
  if (opened == -EACCES || opened == -EPERM) throw Failure("deviceRefused", ::snd_strerror(opened));
  if (opened < 0) throw Failure("deviceMissing", ::snd_strerror(opened));
  if (::snd_pcm_set_params(pcm, SND_PCM_FORMAT_S16, SND_PCM_ACCESS_RW_INTERLEAVED, 1, recordingRate,
                           1, latency) >= 0)
    return pcm;
  ::snd_pcm_close(pcm);
  return nullptr;
}

}  // namespace

Microphone::Microphone(const std::string& device) {
  ::snd_lib_error_set_handler(&beSilent);
  pcm_ = open(device);
  // Converts what a bare device gives.
  if (pcm_ == nullptr) pcm_ = open("plug:'" + device + "'");
  if (pcm_ == nullptr) throw Failure("deviceRefused", "no such form of sound");
  ::snd_pcm_nonblock(pcm_, 0);
}

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
