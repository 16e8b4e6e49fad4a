#include "Feishu/Protocol/FeishuFrame.h"

#include "Feishu/Protocol/ProtoReader.h"

namespace nomely {
namespace {

// A field's number, shifted left by three, and its wire type: 0 a varint, 2 a length and bytes.
enum Tag : std::uint64_t {
  seqIDTag = 1 << 3,
  logIDTag = 2 << 3,
  serviceTag = 3 << 3,
  methodTag = 4 << 3,
  headerTag = 5 << 3 | 2,
  payloadEncodingTag = 6 << 3 | 2,
  payloadTypeTag = 7 << 3 | 2,
  payloadTag = 8 << 3 | 2,
  logIDNewTag = 9 << 3 | 2,
};
enum HeaderTag : std::uint64_t { keyTag = 1 << 3 | 2, valueTag = 2 << 3 | 2 };

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

constexpr std::size_t mostVarint = 10;

void appendVarint(std::string& out, std::uint64_t value) {
  for (; value >= 0x80; value >>= 7U) out += static_cast<char>(value | 0x80U);
  out += static_cast<char>(value);
}

void appendNumber(std::string& out, std::uint64_t tag, std::uint64_t value) {
  appendVarint(out, tag);
  appendVarint(out, value);
}

void appendBytes(std::string& out, std::uint64_t tag, std::string_view value) {
  appendNumber(out, tag, value.size());
  out += value;
}

std::size_t varintSize(std::uint64_t value) {
  std::size_t size = 1;
  while (value >>= 7U) ++size;
  return size;
}

std::size_t encodedSize(const FeishuHeader& header) {
  return 2 + varintSize(header.key.size()) + header.key.size() + varintSize(header.value.size()) +
         header.value.size();
}

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
  std::size_t most = 9 * (1 + mostVarint) + payloadEncoding.size() + payloadType.size() +
                     payload.size() + logIDNew.size();
  for (const FeishuHeader& header : headers) most += 1 + mostVarint + encodedSize(header);
  std::string out;
  out.reserve(most);
  appendNumber(out, seqIDTag, seqID);
  appendNumber(out, logIDTag, logID);
  // A negative number goes as the 64 bits that it stands for.
  appendNumber(out, serviceTag, static_cast<std::uint64_t>(std::int64_t{service}));
  appendNumber(out, methodTag, static_cast<std::uint64_t>(std::int64_t{method}));
  for (const FeishuHeader& header : headers) {
    appendNumber(out, headerTag, encodedSize(header));
    appendBytes(out, keyTag, header.key);
    appendBytes(out, valueTag, header.value);
  }
  if (!payloadEncoding.empty()) appendBytes(out, payloadEncodingTag, payloadEncoding);
  if (!payloadType.empty()) appendBytes(out, payloadTypeTag, payloadType);
  if (!payload.empty()) appendBytes(out, payloadTag, payload);
  if (!logIDNew.empty()) appendBytes(out, logIDNewTag, logIDNew);
  return out;
}

std::optional<std::string> FeishuFrame::headerValue(std::string_view key) const {
  for (const FeishuHeader& header : headers)
    if (header.key == key) return header.value;
  return std::nullopt;
}

}  // namespace nomely
