#pragma once

#include <memory>
#include <string>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/avutil.h>
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
}

namespace nomely::media {

// Owners of the library's objects, each of which has a call of its own that frees it.
struct FreePacket {
  void operator()(AVPacket* packet) const { ::av_packet_free(&packet); }
};
struct FreeFrame {
  void operator()(AVFrame* frame) const { ::av_frame_free(&frame); }
};
struct FreeCodec {
  void operator()(AVCodecContext* codec) const { ::avcodec_free_context(&codec); }
};
struct FreeResampler {
  void operator()(SwrContext* resampler) const { ::swr_free(&resampler); }
};
struct FreeParameters {
  void operator()(AVCodecParameters* parameters) const { ::avcodec_parameters_free(&parameters); }
};
using Packet = std::unique_ptr<AVPacket, FreePacket>;
using Frame = std::unique_ptr<AVFrame, FreeFrame>;
using Codec = std::unique_ptr<AVCodecContext, FreeCodec>;
using Parameters = std::unique_ptr<AVCodecParameters, FreeParameters>;
using Resampler = std::unique_ptr<SwrContext, FreeResampler>;

// The library's word for one of its (negative) errors.
[[nodiscard]] std::string describe(int error);
// `result`, which is no error. Throws Failure of that kind, or "noSpace" where the disk is full.
int require(int result, const char* kind, const char* what);
// `allocated`, which is not null. Throws std::bad_alloc.
template <typename Object>
Object* require(Object* allocated) {
  if (allocated == nullptr) throw std::bad_alloc();
  return allocated;
}

}  // namespace nomely::media
