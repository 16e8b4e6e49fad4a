#include "Media/Decoding.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include <unistd.h>

#include "Media/Failure.h"
#include "Media/Timeline.h"

namespace nomely::media {
namespace {

// Converts frames of any form, which may change from one to the next.
class Converter {
 public:
  Converter(const SoundForm& form, const SampleSink& sink) : form_(form), sink_(sink) {}

  void take(const AVFrame& frame) {
    if (!resampler_ || !isAsBefore(frame)) restart(frame);
    convert(const_cast<const std::uint8_t**>(frame.extended_data), frame.nb_samples);
  }
  // Sends what the resampler still holds.
  void drain() {
    if (resampler_) convert(nullptr, 0);
  }
  void addSilence(double seconds) {
    const std::vector<std::int16_t> silence(samplesOf(form_.rate));
    for (auto left = samplesOf(static_cast<std::size_t>(seconds * form_.rate)); left > 0;) {
      const std::size_t count = std::min(left, silence.size());
      send(Samples(silence).first(count));
      left -= count;
    }
  }
  [[nodiscard]] double seconds() const {
    return static_cast<double>(sent_) / form_.channels / form_.rate;
  }

 private:
  // Of all channels.
  template <typename Count>
  [[nodiscard]] std::size_t samplesOf(Count frames) const {
    return static_cast<std::size_t>(frames) * static_cast<std::size_t>(form_.channels);
  }

  [[nodiscard]] bool isAsBefore(const AVFrame& frame) const {
    return frame.sample_rate == rate_ && frame.format == format_ &&
           frame.ch_layout.nb_channels == channels_;
  }

  void restart(const AVFrame& frame) {
    drain();
    AVChannelLayout input{};
    if (frame.ch_layout.order == AV_CHANNEL_ORDER_UNSPEC)
      ::av_channel_layout_default(&input, frame.ch_layout.nb_channels);
    else
      require(::av_channel_layout_copy(&input, &frame.ch_layout), "unreadable", "channels");
    AVChannelLayout output{};
    ::av_channel_layout_default(&output, form_.channels);
    SwrContext* made = nullptr;
    const int result = ::swr_alloc_set_opts2(&made, &output, AV_SAMPLE_FMT_S16, form_.rate, &input,
                                             static_cast<AVSampleFormat>(frame.format),
                                             frame.sample_rate, 0, nullptr);
    ::av_channel_layout_uninit(&input);
    resampler_.reset(made);
    require(result, "unreadable", "resampler");
    require(::swr_init(made), "unreadable", "resampler");
    rate_ = frame.sample_rate;
    format_ = frame.format;
    channels_ = frame.ch_layout.nb_channels;
  }

  void convert(const std::uint8_t** data, int samples) {
    const int room =
        require(::swr_get_out_samples(resampler_.get(), samples), "unreadable", "size");
    buffer_.resize(samplesOf(room));
    auto* out = reinterpret_cast<std::uint8_t*>(buffer_.data());
    const int count = require(::swr_convert(resampler_.get(), &out, room, data, samples),
                              "unreadable", "resampling");
    send(Samples(buffer_).first(samplesOf(count)));
  }

  void send(Samples samples) {
    sent_ += samples.size();
    sink_(samples);
  }

  SoundForm form_;
  const SampleSink& sink_;
  std::size_t sent_ = 0;
  Resampler resampler_;
  int rate_ = 0;
  int format_ = -1;
  int channels_ = 0;
  std::vector<std::int16_t> buffer_;
};

// One way through the file.
class Decoding {
 public:
  Decoding(SourceFile& file, AVCodecContext& codec, const SoundForm& form, const SampleSink& sink)
      : file_(file), codec_(codec), from_(form.from), converter_(form, sink) {}

  void run() {
    if (from_ > 0 && file_.seek(from_ - warmUp)) timeline_.reset();
    const Packet packet(require(::av_packet_alloc()));
    while (file_.next(*packet))
      // A damaged packet loses itself alone.
      if (::avcodec_send_packet(&codec_, packet.get()) >= 0) receive();
    if (::avcodec_send_packet(&codec_, nullptr) >= 0) receive();
    converter_.drain();
    if (converter_.seconds() == 0 && from_ == 0)
      throw Failure("noAudio", "nothing could be decoded");
  }

 private:
  // Of decoders that need what came before.
  static constexpr double warmUp = 0.3;

  void receive() {
    while (::avcodec_receive_frame(&codec_, frame_.get()) >= 0) {
      if (frame_->sample_rate > 0) place();
      ::av_frame_unref(frame_.get());
    }
  }

  void place() {
    const std::int64_t timestamp = frame_->best_effort_timestamp;
    const bool isUnknown = timestamp == AV_NOPTS_VALUE;
    const double told = isUnknown ? Timeline::unknown : file_.seconds(timestamp);
    const double duration = static_cast<double>(frame_->nb_samples) / frame_->sample_rate;
    // The first piece after a jump says where that went, and it goes no further than it was to.
    if (!timeline_) timeline_.emplace(isUnknown ? from_ : std::clamp(told, 0.0, from_));
    const double start = timeline_->add(told, duration);
    if (start + duration <= from_) return;
    const double gap = start - from_ - converter_.seconds();
    if (gap > Timeline::tolerance) converter_.addSilence(gap);
    converter_.take(*frame_);
  }

  SourceFile& file_;
  AVCodecContext& codec_;
  double from_;
  Converter converter_;
  std::optional<Timeline> timeline_{std::in_place};
  Frame frame_{require(::av_frame_alloc())};
};

void writeAll(int descriptor, Samples samples) {
  const auto* bytes = reinterpret_cast<const char*>(samples.data());
  for (std::size_t left = samples.size_bytes(); left > 0;) {
    const ssize_t sent = ::write(descriptor, bytes, left);
    if (sent < 0 && errno == EINTR) continue;
    if (sent < 0) throw Failure("output", "nobody takes the samples");
    bytes += sent;
    left -= static_cast<std::size_t>(sent);
  }
}

}  // namespace

SoundDecoder::SoundDecoder(int source) : file_(source), codec_(openDecoder(file_.audio())) {}

int SoundDecoder::rate() const {
  return file_.audio().codecpar->sample_rate;
}

void SoundDecoder::run(const SoundForm& form, const SampleSink& sink) {
  Decoding(file_, *codec_, form, sink).run();
}

double durationOf(int source) {
  SourceFile file(source);
  const Packet packet(require(::av_packet_alloc()));
  Timeline timeline;
  while (file.next(*packet)) {
    // What an encoder put before the beginning is not heard.
    if ((packet->flags & AV_PKT_FLAG_DISCARD) != 0) continue;
    timeline.add(packet->pts == AV_NOPTS_VALUE ? Timeline::unknown : file.seconds(packet->pts),
                 static_cast<double>(packet->duration) * ::av_q2d(file.audio().time_base));
  }
  return timeline.end();
}

SoundShape shapeOf(int source, std::size_t parts) {
  constexpr int rate = 8000;
  constexpr std::size_t window = rate / 20;
  std::vector<float> peaks;
  std::size_t samples = 0;
  SoundDecoder(source).run({.rate = rate}, [&](Samples some) {
    for (const std::int16_t sample : some) {
      if (samples++ % window == 0) peaks.push_back(0);
      peaks.back() = std::max(peaks.back(), std::abs(static_cast<float>(sample)) / 32768);
    }
  });
  SoundShape shape{.seconds = static_cast<double>(samples) / rate,
                   .peaks = std::vector<float>(std::min(parts, peaks.size()))};
  for (std::size_t i = 0; i < peaks.size(); ++i) {
    float& peak = shape.peaks[i * shape.peaks.size() / peaks.size()];
    peak = std::max(peak, peaks[i]);
  }
  return shape;
}

void decode(int source, const SoundForm& form, int output) {
  SoundDecoder(source).run(form, [output](Samples samples) { writeAll(output, samples); });
}

}  // namespace nomely::media
