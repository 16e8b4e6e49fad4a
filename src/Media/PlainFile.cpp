#include "Media/PlainFile.h"

#include <cerrno>

#include <unistd.h>

#include "Media/Failure.h"

namespace nomely::media {
namespace {

AVFormatContext* makeFormat() {
  AVFormatContext* format = nullptr;
  require(::avformat_alloc_output_context2(&format, nullptr, "ipod", nullptr), "unwritable",
          "file");
  return format;
}

}  // namespace

PlainFile::PlainFile(int descriptor, const AVCodecParameters& sound, AVRational timeBase)
    : descriptor_(descriptor),
      io_(descriptor, DescriptorIO::Use::write),
      timeBase_(timeBase),
      format_(makeFormat(), &::avformat_free_context) {
  format_->pb = io_.context();
  format_->flags |= AVFMT_FLAG_BITEXACT;
  format_->opaque = this;
  format_->io_open = &PlainFile::openAgain;
  format_->io_close2 = &PlainFile::closeAgain;
  stream_ = require(::avformat_new_stream(format_.get(), nullptr));
  require(::avcodec_parameters_copy(stream_->codecpar, &sound), "unwritable", "parameters");
  stream_->codecpar->codec_tag = 0;
  stream_->time_base = timeBase;
  AVDictionary* options = nullptr;
  ::av_dict_set(&options, "movflags", "faststart", 0);
  const int result = ::avformat_write_header(format_.get(), &options);
  ::av_dict_free(&options);
  require(result, "unwritable", "header");
}

PlainFile::~PlainFile() = default;

void PlainFile::write(AVPacket& packet) {
  ::av_packet_rescale_ts(&packet, timeBase_, stream_->time_base);
  packet.stream_index = 0;
  packet.pos = -1;
  require(::av_write_frame(format_.get(), &packet), "unwritable", "packet");
}

void PlainFile::finish() {
  require(::av_write_trailer(format_.get()), "unwritable", "index");
  ::avio_flush(format_->pb);
  require(format_->pb->error, "unwritable", "index");
  if (::fsync(descriptor_) != 0) require(AVERROR(errno), "unwritable", "fsync");
}

std::int64_t PlainFile::size() const {
  return ::avio_tell(format_->pb);
}

int PlainFile::openAgain(AVFormatContext* format, AVIOContext** opened, const char*, int flags,
                         AVDictionary**) {
  auto& self = *static_cast<PlainFile*>(format->opaque);
  if ((flags & AVIO_FLAG_WRITE) != 0 || self.again_) return AVERROR(EACCES);
  self.again_ = std::make_unique<DescriptorIO>(self.descriptor_, DescriptorIO::Use::read);
  *opened = self.again_->context();
  return 0;
}

int PlainFile::closeAgain(AVFormatContext* format, AVIOContext*) {
  static_cast<PlainFile*>(format->opaque)->again_.reset();
  return 0;
}

}  // namespace nomely::media
