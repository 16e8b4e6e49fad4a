#include <cerrno>

#include <unistd.h>

#include "Media/Failure.h"
#include "Media/RecordingFile.h"
#include "Media/SourceFile.h"

namespace nomely::media {
namespace {

// Of the file under way, which is read again when its index is put at the beginning.
class Output {
 public:
  explicit Output(int descriptor)
      : descriptor_(descriptor), io_(descriptor, DescriptorIO::Use::write) {
    require(::avformat_alloc_output_context2(&format_, nullptr, "ipod", nullptr), "unwritable",
            "file");
    format_->pb = io_.context();
    format_->flags |= AVFMT_FLAG_BITEXACT;
    format_->opaque = this;
    format_->io_open = &Output::openAgain;
    format_->io_close2 = &Output::closeAgain;
  }
  ~Output() { ::avformat_free_context(format_); }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  [[nodiscard]] AVFormatContext* format() { return format_; }

 private:
  static int openAgain(AVFormatContext* format, AVIOContext** opened, const char*, int flags,
                       AVDictionary**) {
    auto& self = *static_cast<Output*>(format->opaque);
    if ((flags & AVIO_FLAG_WRITE) != 0 || self.again_) return AVERROR(EACCES);
    self.again_ = std::make_unique<DescriptorIO>(self.descriptor_, DescriptorIO::Use::read);
    *opened = self.again_->context();
    return 0;
  }
  static int closeAgain(AVFormatContext* format, AVIOContext*) {
    static_cast<Output*>(format->opaque)->again_.reset();
    return 0;
  }

  int descriptor_;
  DescriptorIO io_;
  std::unique_ptr<DescriptorIO> again_;
  AVFormatContext* format_ = nullptr;
};

}  // namespace

void remux(int source, int output) {
  SourceFile file(source);
  Output made(output);
  AVFormatContext* const format = made.format();
  AVStream* const stream = require(::avformat_new_stream(format, nullptr));
  require(::avcodec_parameters_copy(stream->codecpar, file.audio().codecpar), "unwritable",
          "parameters");
  stream->codecpar->codec_tag = 0;
  stream->time_base = file.audio().time_base;
  AVDictionary* options = nullptr;
  ::av_dict_set(&options, "movflags", "faststart", 0);
  const int result = ::avformat_write_header(format, &options);
  ::av_dict_free(&options);
  require(result, "unwritable", "header");

  const Packet packet(require(::av_packet_alloc()));
  bool isEmpty = true;
  while (file.next(*packet)) {
    ::av_packet_rescale_ts(packet.get(), file.audio().time_base, stream->time_base);
    packet->stream_index = 0;
    packet->pos = -1;
    require(::av_write_frame(format, packet.get()), "unwritable", "packet");
    isEmpty = false;
  }
  if (isEmpty) throw Failure("noAudio", "no packet");
  require(::av_write_trailer(format), "unwritable", "index");
  ::avio_flush(format->pb);
  require(format->pb->error, "unwritable", "index");
  if (::fsync(output) != 0) require(AVERROR(errno), "unwritable", "fsync");
}

}  // namespace nomely::media
