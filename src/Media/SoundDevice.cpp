#include "Media/SoundDevice.h"

#include <cerrno>

#include "Media/Failure.h"

namespace nomely::media {
namespace {

void beSilent(const char*, int, const char*, int, const char*, ...) {}

// Null when the device is there but can't do what is asked for.
snd_pcm_t* open(const std::string& device, const DeviceForm& form) {
  snd_pcm_t* pcm = nullptr;
  // A busy device would otherwise be waited for.
  const int opened = ::snd_pcm_open(&pcm, device.c_str(), form.direction, SND_PCM_NONBLOCK);
  if (opened == -EBUSY || opened == -EAGAIN) throw Failure("deviceBusy", ::snd_strerror(opened));
  if (opened == -EACCES || opened == -EPERM) throw Failure("deviceRefused", ::snd_strerror(opened));
  if (opened < 0) throw Failure("deviceMissing", ::snd_strerror(opened));
  if (::snd_pcm_set_params(pcm, SND_PCM_FORMAT_S16, SND_PCM_ACCESS_RW_INTERLEAVED, form.channels,
                           form.rate, 1, form.latency) >= 0)
    return pcm;
  ::snd_pcm_close(pcm);
  return nullptr;
}

}  // namespace

snd_pcm_t* openDevice(const std::string& device, const DeviceForm& form) {
  ::snd_lib_error_set_handler(&beSilent);
  snd_pcm_t* pcm = open(device, form);
  // Converts what a bare device has.
  if (pcm == nullptr) pcm = open("plug:'" + device + "'", form);
  if (pcm == nullptr) throw Failure("deviceRefused", "no such form of sound");
  ::snd_pcm_nonblock(pcm, 0);
  return pcm;
}

}  // namespace nomely::media
