#include "Media/Decoding.h"

#include <cerrno>
#include <cstdint>
#include <vector>

#include <unistd.h>

#include "Media/Failure.h"
#include "Media/SourceFile.h"
#include "Media/Timeline.h"

namespace nomely::media {
namespace {

constexpr int outputRate = 16000;

// Sends samples on.
class SampleSink {
 public:
  explicit SampleSink(int descriptor) : descriptor_(descriptor) {}

  void write(const std::int16_t* samples, std::size_t count) {
    written_ += static_cast<std::int64_t>(count);
    const auto* bytes = reinterpret_cast<const char*>(samples);
    for (std::size_t left = count * sizeof *samples; left > 0;) {
      const ssize_t sent = ::write(descriptor_, bytes, left);
      if (sent < 0 && errno == EINTR) continue;
      if (sent < 0) throw Failure("output", "nobody takes the samples");
      bytes += sent;
      left -= static_cast<std::size_t>(sent);
    }
  }
  void writeSilence(std::int64_t count) {
    static const std::vector<std::int16_t> silence(outputRate);
    for (; count > 0; count -= outputRate)
      write(silence.data(), static_cast<std::size_t>(std::min<std::int64_t>(count, outputRate)));
  }
  [[nodiscard]] std::int64_t written() const { return written_; }

 private:
  int descriptor_;
  std::int64_t written_ = 0;
};

// Converts frames of any form, which may change from one to the next.
class Converter {
 public:
  explicit Converter(SampleSink& sink) : sink_(sink) {}

  void take(const AVFrame& frame) {
    if (!resampler_ || !isAsBefore(frame)) restart(frame);
    convert(const_cast<const std::uint8_t**>(frame.extended_data), frame.nb_samples);
  }
  // Sends what the resampler still holds.
  void drain() {
    if (resampler_) convert(nullptr, 0);
  }

 private:
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
    AVChannelLayout mono{};
    ::av_channel_layout_default(&mono, 1);
    SwrContext* made = nullptr;
    const int result = ::swr_alloc_set_opts2(&made, &mono, AV_SAMPLE_FMT_S16, outputRate, &input,
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
    buffer_.resize(static_cast<std::size_t>(room));
    auto* out = reinterpret_cast<std::uint8_t*>(buffer_.data());
    const int count = require(::swr_convert(resampler_.get(), &out, room, data, samples),
                              "unreadable", "resampling");
    sink_.write(buffer_.data(), static_cast<std::size_t>(count));
  }

  SampleSink& sink_;
  Resampler resampler_;
  int rate_ = 0;
  int format_ = -1;
  int channels_ = 0;
  std::vector<std::int16_t> buffer_;
};

class Decoding {
 public:
  Decoding(int source, int output)
      : file_(source), codec_(openDecoder(file_.audio())), sink_(output) {}

  void run() {
    const Packet packet(require(::av_packet_alloc()));
    while (file_.next(*packet))
      // A damaged packet loses itself alone.
      if (::avcodec_send_packet(codec_.get(), packet.get()) >= 0) receive();
    if (::avcodec_send_packet(codec_.get(), nullptr) >= 0) receive();
    converter_.drain();
    if (sink_.written() == 0) throw Failure("noAudio", "nothing could be decoded");
  }

 private:
  void receive() {
    while (::avcodec_receive_frame(codec_.get(), frame_.get()) >= 0) {
      if (frame_->sample_rate > 0) place();
      ::av_frame_unref(frame_.get());
    }
  }

  void place() {
    const std::int64_t told = frame_->best_effort_timestamp;
    const double start =
        timeline_.add(told == AV_NOPTS_VALUE ? Timeline::unknown : file_.seconds(told),
                      static_cast<double>(frame_->nb_samples) / frame_->sample_rate);
    const double gap = start - static_cast<double>(sink_.written()) / outputRate;
    if (gap > Timeline::tolerance) sink_.writeSilence(static_cast<std::int64_t>(gap * outputRate));
    converter_.take(*frame_);
  }

  SourceFile file_;
  Codec codec_;
  SampleSink sink_;
  Converter converter_{sink_};
  Timeline timeline_;
  Frame frame_{require(::av_frame_alloc())};
};

}  // namespace

double durationOf(int source) {
  SourceFile file(source);
  const Packet packet(require(::av_packet_alloc()));
  Timeline timeline;
  while (file.next(*packet))
    timeline.add(packet->pts == AV_NOPTS_VALUE ? Timeline::unknown : file.seconds(packet->pts),
                 static_cast<double>(packet->duration) * ::av_q2d(file.audio().time_base));
  return timeline.end();
}

void decode(int source, int output) {
  Decoding(source, output).run();
}

}  // namespace nomely::media
