#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "Media/Libav.h"

namespace nomely::media {

// Makes AAC of samples of one channel. Calls throw Failure.
class AacEncoder {
 public:
  using Taker = std::function<void(AVPacket& packet)>;

  // `rate` is one of the encoding's, see nearestRate; `bitRate` counts bits a second.
  AacEncoder(int rate, int bitRate);

  // The lowest rate of the encoding's up to 48 kHz that loses nothing of `rate`: 20000 → 22050.
  [[nodiscard]] static int nearestRate(int rate);

  // Packets go to `take` as they are ready, with times in 1/rate seconds.
  void write(std::span<const std::int16_t> samples, const Taker& take);
  // Gives what is left. Nothing can be written after it.
  void finish(const Taker& take);

  [[nodiscard]] const AVCodecContext& codec() const { return *codec_; }
  // Samples that have gone into the encoder; the last few of those written wait for more.
  [[nodiscard]] std::int64_t samples() const { return samples_; }

 private:
  void encodePending(const Taker& take);
  void encode(const AVFrame* frame, const Taker& take);

  Codec codec_;
  Packet packet_{require(::av_packet_alloc())};
  Frame frame_{require(::av_frame_alloc())};
  std::vector<float> pending_;
  std::int64_t samples_ = 0;
};

}  // namespace nomely::media
