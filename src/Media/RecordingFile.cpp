#include "Media/RecordingFile.h"

#include <algorithm>
#include <cerrno>

#include <sys/stat.h>
#include <unistd.h>

#include "Media/Failure.h"

namespace nomely::media {
namespace {

constexpr int bitRate = 128'000;
// Of 1024 samples each: 0.998 s.
constexpr int packetsOfFragment = 43;

AVFormatContext* makeFile(AVIOContext* io) {
  AVFormatContext* format = nullptr;
  require(::avformat_alloc_output_context2(&format, nullptr, "ipod", nullptr), "unwritable",
          "file");
  format->pb = io;
  format->flags |= AVFMT_FLAG_BITEXACT;
  return format;
}

void requireDurable(int descriptor) {
  if (::fdatasync(descriptor) != 0) require(AVERROR(errno), "unwritable", "fdatasync");
}

std::int64_t sizeOf(int descriptor) {
  struct stat status {};
  if (::fstat(descriptor, &status) != 0) require(AVERROR(errno), "unwritable", "fstat");
  return status.st_size;
}

}  // namespace

RecordingFile::RecordingFile(int descriptor)
    : descriptor_(descriptor), io_(descriptor, DescriptorIO::Use::write) {
  const AVCodec* const aac = ::avcodec_find_encoder(AV_CODEC_ID_AAC);
  if (aac == nullptr) throw Failure("unwritable", "no AAC encoder");
  codec_.reset(require(::avcodec_alloc_context3(aac)));
  codec_->sample_fmt = AV_SAMPLE_FMT_FLTP;
  codec_->sample_rate = recordingRate;
  codec_->bit_rate = bitRate;
  codec_->time_base = {1, recordingRate};
  ::av_channel_layout_default(&codec_->ch_layout, 1);
  codec_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER | AV_CODEC_FLAG_BITEXACT;
  require(::avcodec_open2(codec_.get(), aac, nullptr), "unwritable", "encoder");

  frame_->nb_samples = codec_->frame_size;
  frame_->format = AV_SAMPLE_FMT_FLTP;
  frame_->sample_rate = recordingRate;
  require(::av_channel_layout_copy(&frame_->ch_layout, &codec_->ch_layout), "unwritable", "frame");
  require(::av_frame_get_buffer(frame_.get(), 0), "unwritable", "frame");

  format_ = makeFile(io_.context());
  try {
    AVStream* const stream = require(::avformat_new_stream(format_, nullptr));
    stream->time_base = codec_->time_base;
    require(::avcodec_parameters_from_context(stream->codecpar, codec_.get()), "unwritable",
            "parameters");
    AVDictionary* options = nullptr;
    ::av_dict_set(&options, "movflags", "frag_custom+empty_moov+default_base_moof+skip_trailer", 0);
    const int result = ::avformat_write_header(format_, &options);
    ::av_dict_free(&options);
    require(result, "unwritable", "header");
    endFragment();
  } catch (...) {
    ::avformat_free_context(format_);
    throw;
  }
}

RecordingFile::~RecordingFile() {
  ::avformat_free_context(format_);
}

double RecordingFile::seconds() const {
  return static_cast<double>(safeSamples_) / recordingRate;
}

void RecordingFile::write(std::span<const std::int16_t> samples) {
  constexpr float scale = 1.0F / 32768;
  const auto size = static_cast<std::size_t>(frame_->nb_samples);
  for (const std::int16_t sample : samples) {
    pending_.push_back(static_cast<float>(sample) * scale);
    if (pending_.size() < size) continue;
    require(::av_frame_make_writable(frame_.get()), "unwritable", "frame");
    std::ranges::copy(pending_, reinterpret_cast<float*>(frame_->data[0]));
    pending_.clear();
    frame_->pts = samples_;
    samples_ += frame_->nb_samples;
    encode(frame_.get());
  }
}

void RecordingFile::finish() {
  if (!pending_.empty())
    write(
        std::vector<std::int16_t>(static_cast<std::size_t>(frame_->nb_samples) - pending_.size()));
  encode(nullptr);
  endFragment();
}

void RecordingFile::encode(const AVFrame* frame) {
  require(::avcodec_send_frame(codec_.get(), frame), "unwritable", "encoding");
  while (::avcodec_receive_packet(codec_.get(), packet_.get()) >= 0) {
    packet_->stream_index = 0;
    const int result = ::av_write_frame(format_, packet_.get());
    ::av_packet_unref(packet_.get());
    require(result, "unwritable", "packet");
    if (++packets_ >= packetsOfFragment) endFragment();
  }
}

void RecordingFile::endFragment() {
  try {
    require(::av_write_frame(format_, nullptr), "unwritable", "fragment");
    ::avio_flush(format_->pb);
    require(format_->pb->error, "unwritable", "fragment");
    requireDurable(descriptor_);
  } catch (const Failure&) {
    cutOffDamage();
    throw;
  }
  safeSize_ = sizeOf(descriptor_);
  safeSamples_ = samples_;
  packets_ = 0;
}

// Half a fragment would keep players from what stands before it.
void RecordingFile::cutOffDamage() noexcept {
  (void)!::ftruncate(descriptor_, safeSize_);
}

}  // namespace nomely::media
