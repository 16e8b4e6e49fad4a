#pragma once

#include <cstdint>
#include <memory>

#include "Media/DescriptorIO.h"
#include "Media/Libav.h"

namespace nomely::media {

// An m4a that plays everywhere, with its index at the beginning. Calls throw Failure.
class PlainFile {
 public:
  // `descriptor` is an empty file, open for reading too: it is read again when the index is put
  // in. `timeBase` is the unit of its packets' times.
  PlainFile(int descriptor, const AVCodecParameters& sound, AVRational timeBase);
  ~PlainFile();
  PlainFile(const PlainFile&) = delete;
  PlainFile& operator=(const PlainFile&) = delete;

  void write(AVPacket& packet);
  // Returns when the file is whole and on the disk.
  void finish();
  // Bytes so far.
  [[nodiscard]] std::int64_t size() const;

 private:
  static int openAgain(AVFormatContext* format, AVIOContext** opened, const char* url, int flags,
                       AVDictionary** options);
  static int closeAgain(AVFormatContext* format, AVIOContext* opened);

  int descriptor_;
  DescriptorIO io_;
  std::unique_ptr<DescriptorIO> again_;
  AVRational timeBase_;
  std::unique_ptr<AVFormatContext, decltype(&::avformat_free_context)> format_;
  AVStream* stream_ = nullptr;
};

}  // namespace nomely::media
