#include "Media/Rewriting.h"

#include <algorithm>
#include <cstdint>

#include "Media/AacEncoder.h"
#include "Media/Decoding.h"
#include "Media/Failure.h"
#include "Media/PlainFile.h"
#include "Media/SourceFile.h"

namespace nomely::media {
namespace {

// A few kilobytes of Opus can be hours of silence.
constexpr std::int64_t mostBytes = std::int64_t{256} << 20;

// Music needs no more at 48 kHz, and speech of a telephone's 8 kHz gets what AAC can use there.
int bitRateFor(int rate) {
  constexpr int bitsPerSample = 3;
  constexpr int most = 96'000;
  return std::min(rate * bitsPerSample, most);
}

}  // namespace

void remux(int source, int output) {
  SourceFile file(source);
  PlainFile made(output, *file.audio().codecpar, file.audio().time_base);
  const Packet packet(require(::av_packet_alloc()));
  bool isEmpty = true;
  for (; file.next(*packet); isEmpty = false) made.write(*packet);
  if (isEmpty) throw Failure("noAudio", "no packet");
  made.finish();
}

void convert(int source, int output) {
  SoundDecoder decoder(source);
  const int rate = AacEncoder::nearestRate(decoder.rate());
  AacEncoder encoder(rate, bitRateFor(rate));
  const Parameters parameters(require(::avcodec_parameters_alloc()));
  require(::avcodec_parameters_from_context(parameters.get(), &encoder.codec()), "unwritable",
          "parameters");
  PlainFile made(output, *parameters, encoder.codec().time_base);
  const AacEncoder::Taker write = [&](AVPacket& packet) {
    if (made.size() > mostBytes) throw Failure("tooLong", "too much sound");
    made.write(packet);
  };
  decoder.run({.rate = rate}, [&](Samples samples) { encoder.write(samples, write); });
  encoder.finish(write);
  made.finish();
}

}  // namespace nomely::media
