#pragma once

#include <cstdint>
#include <span>

#include <sys/types.h>

namespace nomely::media {

// The sound of a foreign file from a moment on, in the form of PlayedForm.h: made in a confined
// process of its own, which has nothing of the speaker's connection to the rest of the machine.
class DecoderChild {
 public:
  // `from` in seconds. Throws Failure.
  DecoderChild(int file, double from);
  ~DecoderChild();
  DecoderChild(const DecoderChild&) = delete;
  DecoderChild& operator=(const DecoderChild&) = delete;

  // What poll(2) tells of samples.
  [[nodiscard]] int descriptor() const { return samples_; }
  // Fills the beginning of `buffer` with whole frames, once there are some, and returns it; empty
  // at the end. Throws Failure as the decoder did, "unreadable" where it crashed.
  [[nodiscard]] std::span<const std::int16_t> read(std::span<std::int16_t> buffer);

 private:
  void requireSuccess();

  int samples_ = -1;
  pid_t process_ = -1;
};

}  // namespace nomely::media
