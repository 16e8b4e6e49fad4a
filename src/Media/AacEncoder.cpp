#include "Media/AacEncoder.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "Media/Failure.h"

namespace nomely::media {

AacEncoder::AacEncoder(int rate, int bitRate) {
  const AVCodec* const aac = ::avcodec_find_encoder(AV_CODEC_ID_AAC);
  if (aac == nullptr) throw Failure("unwritable", "no AAC encoder");
  codec_.reset(require(::avcodec_alloc_context3(aac)));
  codec_->sample_fmt = AV_SAMPLE_FMT_FLTP;
  codec_->sample_rate = rate;
  codec_->bit_rate = bitRate;
  codec_->time_base = {1, rate};
  codec_->thread_count = 1;
  ::av_channel_layout_default(&codec_->ch_layout, 1);
  codec_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER | AV_CODEC_FLAG_BITEXACT;
  require(::avcodec_open2(codec_.get(), aac, nullptr), "unwritable", "encoder");

  frame_->nb_samples = codec_->frame_size;
  frame_->format = AV_SAMPLE_FMT_FLTP;
  frame_->sample_rate = rate;
  require(::av_channel_layout_copy(&frame_->ch_layout, &codec_->ch_layout), "unwritable", "frame");
  require(::av_frame_get_buffer(frame_.get(), 0), "unwritable", "frame");
}

int AacEncoder::nearestRate(int rate) {
  constexpr std::array rates{8000, 11025, 12000, 16000, 22050, 24000, 32000, 44100, 48000};
  const auto* const found = std::ranges::lower_bound(rates, rate);
  return found == rates.end() ? rates.back() : *found;
}

void AacEncoder::write(std::span<const std::int16_t> samples, const Taker& take) {
  constexpr float scale = 1.0F / 32768;
  const auto size = static_cast<std::size_t>(codec_->frame_size);
  for (const std::int16_t sample : samples) {
    pending_.push_back(static_cast<float>(sample) * scale);
    if (pending_.size() == size) encodePending(take);
  }
}

void AacEncoder::finish(const Taker& take) {
  if (!pending_.empty()) encodePending(take);
  encode(nullptr, take);
}

void AacEncoder::encodePending(const Taker& take) {
  require(::av_frame_make_writable(frame_.get()), "unwritable", "frame");
  std::ranges::copy(pending_, reinterpret_cast<float*>(frame_->data[0]));
  frame_->nb_samples = static_cast<int>(pending_.size());
  frame_->pts = samples_;
  samples_ += frame_->nb_samples;
  pending_.clear();
  encode(frame_.get(), take);
}

void AacEncoder::encode(const AVFrame* frame, const Taker& take) {
  require(::avcodec_send_frame(codec_.get(), frame), "unwritable", "encoding");
  while (::avcodec_receive_packet(codec_.get(), packet_.get()) >= 0) {
    packet_->stream_index = 0;
    take(*packet_);
    ::av_packet_unref(packet_.get());
  }
}

}  // namespace nomely::media
