#include "Media/SourceFile.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "Media/Failure.h"

namespace nomely::media {
namespace {

constexpr auto containers = "mov,mp3,wav,w64,aac,ogg,flac,matroska,amr,caf,aiff,au";
constexpr auto encodings =
    "aac,aac_latm,alac,mp3,mp3float,mp2,mp2float,mp1float,vorbis,opus,flac,amrnb,amrwb,"
    "pcm_s16le,pcm_s16be,pcm_s24le,pcm_s24be,pcm_s32le,pcm_s32be,pcm_u8,pcm_s8,pcm_f32le,pcm_f32be,"
    "pcm_f64le,pcm_f64be,pcm_alaw,pcm_mulaw,adpcm_ms,adpcm_ima_wav,adpcm_ima_qt,gsm,gsm_ms";

}  // namespace

SourceFile::SourceFile(int descriptor)
    : table_(SampleTable::ofLongFile(descriptor)),
      io_(table_ ? DescriptorIO(table_->header())
                 : DescriptorIO(descriptor, DescriptorIO::Use::read)) {
  format_ = require(::avformat_alloc_context());
  format_->pb = io_.context();
  format_->io_open = &refuseToOpen;
  format_->format_whitelist = require(::av_strdup(containers));
  format_->codec_whitelist = require(::av_strdup(encodings));
  format_->protocol_whitelist = require(::av_strdup("none"));
  // Frees the context when it fails.
  require(::avformat_open_input(&format_, nullptr, nullptr, nullptr), "unreadable", "open");
  try {
    choose();
  } catch (...) {
    ::avformat_close_input(&format_);
    throw;
  }
}

void SourceFile::choose() {
  for (unsigned i = 0; i < format_->nb_streams; ++i)
    if (format_->streams[i]->codecpar->codec_type != AVMEDIA_TYPE_AUDIO)
      format_->streams[i]->discard = AVDISCARD_ALL;
  require(::avformat_find_stream_info(format_, nullptr), "unreadable", "streams");
  const int chosen = ::av_find_best_stream(format_, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
  if (chosen < 0) throw Failure("noAudio", describe(chosen));
  for (unsigned i = 0; i < format_->nb_streams; ++i)
    if (i != static_cast<unsigned>(chosen)) format_->streams[i]->discard = AVDISCARD_ALL;
  audio_ = format_->streams[chosen];
  if (format_->start_time != AV_NOPTS_VALUE)
    origin_ = static_cast<double>(format_->start_time) / AV_TIME_BASE;
}

SourceFile::~SourceFile() {
  ::avformat_close_input(&format_);
}

bool SourceFile::next(AVPacket& packet) {
  if (table_) {
    const bool isMore = table_->next(packet);
    packet.stream_index = audio_->index;
    return isMore;
  }
  for (;;) {
    ::av_packet_unref(&packet);
    const int result = ::av_read_frame(format_, &packet);
    if (result == AVERROR(EIO)) throw Failure("unreadable", describe(result));
    if (result < 0) return false;
    if (packet.stream_index == audio_->index) return true;
  }
}

bool SourceFile::seek(double moment) {
  const double place = (std::max(moment, 0.0) + origin_) / ::av_q2d(audio_->time_base);
  constexpr double farthest = 1e18;
  if (!(std::abs(place) < farthest)) return false;
  const auto timestamp = static_cast<std::int64_t>(place);
  if (table_) return table_->skipTo(timestamp), true;
  return ::av_seek_frame(format_, audio_->index, timestamp, AVSEEK_FLAG_BACKWARD) >= 0;
}

double SourceFile::seconds(std::int64_t timestamp) const {
  return static_cast<double>(timestamp) * ::av_q2d(audio_->time_base) - origin_;
}

Codec openDecoder(const AVStream& audio) {
  const AVCodec* const known = ::avcodec_find_decoder(audio.codecpar->codec_id);
  if (known == nullptr) throw Failure("unreadable", "unknown encoding");
  Codec codec(require(::avcodec_alloc_context3(known)));
  require(::avcodec_parameters_to_context(codec.get(), audio.codecpar), "unreadable", "parameters");
  codec->thread_count = 1;
  codec->pkt_timebase = audio.time_base;
  codec->codec_whitelist = require(::av_strdup(encodings));
  require(::avcodec_open2(codec.get(), known, nullptr), "unreadable", "decoder");
  return codec;
}

}  // namespace nomely::media
