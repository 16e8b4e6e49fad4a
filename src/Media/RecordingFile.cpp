#include "Media/RecordingFile.h"

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
    : descriptor_(descriptor),
      io_(descriptor, DescriptorIO::Use::write),
      encoder_(recordingRate, bitRate) {
  format_ = makeFile(io_.context());
  try {
    AVStream* const stream = require(::avformat_new_stream(format_, nullptr));
    stream->time_base = encoder_.codec().time_base;
    require(::avcodec_parameters_from_context(stream->codecpar, &encoder_.codec()), "unwritable",
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
  encoder_.write(samples, [this](AVPacket& packet) { put(packet); });
}

void RecordingFile::finish() {
  encoder_.finish([this](AVPacket& packet) { put(packet); });
  endFragment();
}

void RecordingFile::put(AVPacket& packet) {
  require(::av_write_frame(format_, &packet), "unwritable", "packet");
  if (++packets_ >= packetsOfFragment) endFragment();
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
  safeSamples_ = encoder_.samples();
  packets_ = 0;
}

// Half a fragment would keep players from what stands before it.
void RecordingFile::cutOffDamage() noexcept {
  (void)!::ftruncate(descriptor_, safeSize_);
}

}  // namespace nomely::media
