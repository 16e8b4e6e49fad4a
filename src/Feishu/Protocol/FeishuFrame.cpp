#include "Feishu/Protocol/FeishuFrame.h"

#include <array>
#include <bit>
#include <cstring>
#include <utility>

#include "Feishu/Protocol/ProtoReader.h"

namespace nomely {
namespace {

// A field's number, shifted left by three, and its wire type: 0 a varint, 2 a length and bytes.
enum Tag : std::uint8_t {
  seqIDTag = 1 << 3,
  logIDTag = 2 << 3,
  serviceTag = 3 << 3,
  methodTag = 4 << 3,
  headerTag = 5 << 3 | 2,
  payloadEncodingTag = 6 << 3 | 2,
  payloadTypeTag = 7 << 3 | 2,
  payloadTag = 8 << 3 | 2,
  logIDNewTag = 9 << 3 | 2,
  // Of a header's own fields.
  keyTag = 1 << 3 | 2,
  valueTag = 2 << 3 | 2,
};

using End = std::optional<std::size_t>;

// Each takes the value at `at` and gives its end.
template <typename Integer>
End readNumber(Integer& field, std::string_view buffer, std::size_t at) {
  const auto number = ProtoReader::readVarint(buffer, at);
  if (!number) return std::nullopt;
  field = static_cast<Integer>(number->value);
  return number->next;
}

End readBytes(std::string& field, std::string_view buffer, std::size_t at) {
  const auto bytes = ProtoReader::readLengthDelimited(buffer, at);
  if (!bytes) return std::nullopt;
  field = bytes->value;
  return bytes->next;
}

End readText(std::string& field, std::string_view buffer, std::size_t at) {
  const auto bytes = ProtoReader::readLengthDelimited(buffer, at);
  if (!bytes) return std::nullopt;
  field = ProtoReader::textOf(bytes->value);
  return bytes->next;
}

End readHeader(std::vector<FeishuHeader>& headers, std::string_view buffer, std::size_t at) {
  const auto bytes = ProtoReader::readLengthDelimited(buffer, at);
  if (!bytes) return std::nullopt;
  if (auto header = ProtoReader::decodeHeader(bytes->value)) headers.push_back(std::move(*header));
  return bytes->next;
}

End readField(FeishuFrame& frame, std::uint64_t tag, std::string_view buffer, std::size_t at) {
  switch (tag) {
    case seqIDTag:
      return readNumber(frame.seqID, buffer, at);
    case logIDTag:
      return readNumber(frame.logID, buffer, at);
    case serviceTag:
      return readNumber(frame.service, buffer, at);
    case methodTag:
      return readNumber(frame.method, buffer, at);
    case headerTag:
      return readHeader(frame.headers, buffer, at);
    case payloadEncodingTag:
      return readText(frame.payloadEncoding, buffer, at);
    case payloadTypeTag:
      return readText(frame.payloadType, buffer, at);
    case payloadTag:
      return readBytes(frame.payload, buffer, at);
    case logIDNewTag:
      return readText(frame.logIDNew, buffer, at);
    default:
      return ProtoReader::skipField(buffer, at, tag & 7U);
  }
}

std::size_t sizeOf(std::uint64_t varint) {
  return (static_cast<std::size_t>(std::bit_width(varint | 1U)) + 6) / 7;
}

std::size_t sizeOf(std::string_view bytes) {
  return sizeOf(bytes.size()) + bytes.size();
}

std::size_t sizeOf(const FeishuHeader& header) {
  return 2 + sizeOf(header.key) + sizeOf(header.value);
}

// A negative number goes as the 64 bits that it stands for.
std::uint64_t extended(std::int32_t number) {
  return static_cast<std::uint64_t>(std::int64_t{number});
}

// Writes field after field into a text that has room for them.
class FieldWriter {
 public:
  explicit FieldWriter(std::string& out) : at_(out.data()) {}

  void number(Tag tag, std::uint64_t value) {
    *at_++ = static_cast<char>(tag);
    varint(value);
  }
  void bytes(Tag tag, std::string_view value) {
    *at_++ = static_cast<char>(tag);
    varint(value.size());
    std::memcpy(at_, value.data(), value.size());
    at_ += value.size();
  }
  void header(const FeishuHeader& header) {
    number(headerTag, sizeOf(header));
    bytes(keyTag, header.key);
    bytes(valueTag, header.value);
  }

 private:
  void varint(std::uint64_t value) {
    for (; value >= 0x80; value >>= 7U) *at_++ = static_cast<char>(value | 0x80U);
    *at_++ = static_cast<char>(value);
  }

  char* at_;
};

}  // namespace

std::optional<FeishuFrame> FeishuFrame::decode(std::string_view protoData) {
  std::optional<FeishuFrame> frame(std::in_place);
  for (std::size_t at = 0; at < protoData.size();) {
    const auto tag = ProtoReader::readVarint(protoData, at);
    if (!tag) return std::nullopt;
    const auto next = readField(*frame, tag->value, protoData, tag->next);
    if (!next) return std::nullopt;
    at = *next;
  }
  return frame;
}

std::string FeishuFrame::encode() const {
  const std::array<std::pair<Tag, const std::string*>, 4> last{
      {{payloadEncodingTag, &payloadEncoding},
       {payloadTypeTag, &payloadType},
       {payloadTag, &payload},
       {logIDNewTag, &logIDNew}}};
  std::size_t size =
      4 + sizeOf(seqID) + sizeOf(logID) + sizeOf(extended(service)) + sizeOf(extended(method));
  for (const FeishuHeader& header : headers) {
    const std::size_t length = sizeOf(header);
    size += 1 + sizeOf(length) + length;
  }
  for (const auto& [tag, value] : last)
    if (!value->empty()) size += 1 + sizeOf(*value);

  std::string out(size, '\0');
  FieldWriter writer(out);
  writer.number(seqIDTag, seqID);
  writer.number(logIDTag, logID);
  writer.number(serviceTag, extended(service));
  writer.number(methodTag, extended(method));
  for (const FeishuHeader& header : headers) writer.header(header);
  for (const auto& [tag, value] : last)
    if (!value->empty()) writer.bytes(tag, *value);
  return out;
}

std::optional<std::string> FeishuFrame::headerValue(std::string_view key) const {
  for (const FeishuHeader& header : headers)
    if (header.key == key) return header.value;
  return std::nullopt;
}

}  // namespace nomely
