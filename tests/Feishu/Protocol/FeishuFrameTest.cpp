#include <gtest/gtest.h>

#include "Feishu/Protocol/FeishuFrame.h"

namespace nomely::test {
namespace {

using namespace std::string_literals;

const FeishuFrame full{.seqID = 300,
                       .logID = ~std::uint64_t{0},
                       .service = -7,
                       .method = 1,
                       .headers = {{"type", "event"}, {"", ""}, {"type", "二"}},
                       .payloadEncoding = "gzip",
                       .payloadType = "json",
                       .payload = "\0\xFF{}"s,
                       .logIDNew = std::string(200, 'n')};

TEST(FeishuFrame, BytesOfWhatIsSent) {
  for (const auto& [frame, bytes] : std::vector<std::pair<FeishuFrame, std::string>>{
           {{}, "\x08\0\x10\0\x18\0\x20\0"s},
           {{.service = -1}, "\x08\0\x10\0\x18\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x01\x20\0"s},
           {{.seqID = 128, .headers = {{"type", "ping"}, {}}, .payload = "p", .logIDNew = "n"},
            "\x08\x80\x01\x10\0\x18\0\x20\0\x2A\x0C\x0A\x04type\x12\x04ping\x2A\x04\x0A\0\x12\0"
            "\x42\x01p\x4A\x01n"s}})
    EXPECT_EQ(frame.encode(), bytes);
  EXPECT_EQ(FeishuFrame::decode(full.encode()), full);
  EXPECT_EQ(full.headerValue("type"), "event");
  EXPECT_EQ(full.headerValue("Type"), std::nullopt);
}

TEST(FeishuFrame, BytesOfOthers) {
  const std::string nines(9, '\xFF');
  for (const auto& [bytes, frame] : std::vector<std::pair<std::string, std::optional<FeishuFrame>>>{
           {"", FeishuFrame{}},
           {"\x08", {}},
           {"\x88\x00\x05"s, FeishuFrame{.seqID = 5}},
           {"\x08\x01\x08\x02", FeishuFrame{.seqID = 2}},
           // The longest numbers, and bits that no field has room for.
           {"\x08" + nines + "\x7F", FeishuFrame{.seqID = ~std::uint64_t{0}}},
           {"\x08" + nines + "\x81\x01", {}},
           {"\x18" + nines + "\x01", FeishuFrame{.service = -1}},
           {"\x20\x85\x80\x80\x80\x10", FeishuFrame{.method = 5}},
           {"\x20\x80\x80\x80\x80\x08", FeishuFrame{.method = INT32_MIN}},
           // Fields of others, and ours in another wire type.
           {"\x55wxyz\x08\x01", FeishuFrame{.seqID = 1}},
           {"\x55xyz", {}},
           {"\x51stuvwxyz\x08\x01", FeishuFrame{.seqID = 1}},
           {"\x51stuvwxy", {}},
           {"\x50\x01\x5A\x01x\x02\x01y\x08\x01", FeishuFrame{.seqID = 1}},
           {"\x1A\x02\x08\x09\x40\x03\x2Dwxyz", FeishuFrame{}},
           {"\x53", {}},
           {"\x54", {}},
           {"\x56\x01", {}},
           {"\x57\x01", {}},
           // Lengths.
           {"\x42\0\x42\x02hi\x42\x01x"s, FeishuFrame{.payload = "x"}},
           {"\x42\x03hi", {}},
           {"\x42" + nines + "\x01", {}},
           {"\x42\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x7F", {}},
           // What a header fails by leaves it out alone.
           {"\x2A\x05\x08\x01\x12\x01v\x2A\x03\x12\x01w", FeishuFrame{.headers = {{"", "w"}}}},
           {"\x2A\x02\x0A\x05", FeishuFrame{}},
           {"\x2A\x01\x8A", FeishuFrame{}},
           {"\x2A\x06\x1A\x01x\x0A\x01k", FeishuFrame{.headers = {{"k", ""}}}},
           {"\x2A\0"s, FeishuFrame{.headers = {{}}}},
           // Half of a character.
           {"\x32\x01\xE4\x3A\x02\xC0\x80\x4A\x01\xFF\x42\x01\xFF\x2A\x06\x0A\x01\xFF\x12\x01v",
            FeishuFrame{.headers = {{"", "v"}}, .payload = "\xFF"}}})
    EXPECT_EQ(FeishuFrame::decode(bytes), frame) << testing::PrintToString(bytes);
}

// Cut between two fields it is a frame without the rest.
TEST(FeishuFrame, CutAtEveryByte) {
  const std::string bytes = full.encode();
  std::size_t frames = 0;
  for (std::size_t length = 0; length < bytes.size(); ++length)
    if (FeishuFrame::decode(std::string(bytes, 0, length))) ++frames;
  EXPECT_EQ(frames, 11U);
}

}  // namespace
}  // namespace nomely::test
