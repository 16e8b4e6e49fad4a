#include <fmt/format.h>

#include "Feishu/Protocol/FeishuFrame.h"
#include "bench/Comparison.h"
#ifdef NOMELY_PROTOBUF
#include <frame.pb.h>
#endif

namespace nomely::bench {
namespace {

const FeishuFrame event{.seqID = 48'213,
                        .logID = 7'439'214'896'123'211'804,
                        .service = 33'554'678,
                        .method = 1,
                        .headers = {{"type", "event"},
                                    {"message_id", "0d6a1f2e-3b5c-4f7a-9e21-5b7e6a9c1d02"},
                                    {"sum", "1"},
                                    {"seq", "0"},
                                    {"trace_id", "b7ad6b7169203331b7ad6b7169203331"},
                                    {"timestamp", "1789012345678"},
                                    {"biz_rt", "3"},
                                    {"event_type", "im.message.receive_v1"}},
                        .payloadEncoding = "utf-8",
                        .payloadType = "json",
                        .payload = std::string(950, '{'),
                        .logIDNew = "20261122014305B7AD6B7169203331"};
const FeishuFrame ping{.service = 33'554'678, .headers = {{"type", "ping"}}};

#ifdef NOMELY_PROTOBUF

proto::Frame decodedByFloor(const std::string& bytes) {
  proto::Frame frame;
  frame.ParseFromString(bytes);
  return frame;
}

template <typename Floor, typename Ours>
Steps compared(const std::string& bytes, Floor floor, Ours ours) {
  constexpr std::size_t framesInStep = 2000;
  const auto repeated = [](auto work) {
    return [work](std::size_t) {
      for (std::size_t i = 0; i < framesInStep; ++i) {
        auto result = work();
        benchmark::DoNotOptimize(result);
      }
    };
  };
  return {.floor = repeated(floor),
          .ours = repeated(ours),
          .units = framesInStep,
          .bytes = static_cast<double>(bytes.size() * framesInStep)};
}

Steps decoding(const FeishuFrame& frame) {
  const std::string bytes = frame.encode();
  return compared(
      bytes, [bytes] { return decodedByFloor(bytes); },
      [bytes] { return FeishuFrame::decode(bytes); });
}

Steps encoding(const FeishuFrame& frame) {
  const std::string bytes = frame.encode();
  return compared(
      bytes, [theirs = decodedByFloor(bytes)] { return theirs.SerializeAsString(); },
      [frame] { return frame.encode(); });
}

#else

Steps decoding(const FeishuFrame& /*frame*/) {
  throw Skipped("libprotobuf-dev and protobuf-compiler");
}
Steps encoding(const FeishuFrame& frame) {
  return decoding(frame);
}

#endif

}  // namespace

void registerFrames() {
  for (const auto& [name, frame] : {std::pair("event", &event), {"ping", &ping}}) {
    registerComparison({.what = fmt::format("decode a frame, {} (floor: protobuf-lite)", name),
                        .prepare = [frame = frame] { return decoding(*frame); },
                        .goal = {.ratio = 1.0}});
    registerComparison({.what = fmt::format("encode a frame, {} (floor: protobuf-lite)", name),
                        .prepare = [frame = frame] { return encoding(*frame); },
                        .goal = {.ratio = 1.0}});
  }
}

}  // namespace nomely::bench
