#include "Feishu/Protocol/ProtoReader.h"

#include "Platform/Text/Unicode.h"

namespace nomely::ProtoReader {

std::optional<Number> readVarint(std::string_view buffer, std::size_t at) {
  constexpr unsigned mostBits = 70;
  Number number{0, at};
  for (unsigned shift = 0; shift < mostBits && number.next < buffer.size(); shift += 7) {
    const auto byte = static_cast<unsigned char>(buffer[number.next++]);
    number.value |= static_cast<std::uint64_t>(byte & 0x7FU) << shift;
    if (byte < 0x80) return number;
  }
  return std::nullopt;
}

std::optional<Bytes> readLengthDelimited(std::string_view buffer, std::size_t at) {
  const auto length = readVarint(buffer, at);
  if (!length || length->value > buffer.size() - length->next) return std::nullopt;
  return Bytes{buffer.substr(length->next, length->value), length->next + length->value};
}

std::optional<std::size_t> skipField(std::string_view buffer, std::size_t at, unsigned wireType) {
  const auto advanced = [&](std::size_t count) {
    return count <= buffer.size() - at ? std::optional(at + count) : std::nullopt;
  };
  switch (wireType) {
    case 0: {
      const auto number = readVarint(buffer, at);
      return number ? std::optional(number->next) : std::nullopt;
    }
    case 1:
      return advanced(8);
    case 2: {
      const auto bytes = readLengthDelimited(buffer, at);
      return bytes ? std::optional(bytes->next) : std::nullopt;
    }
    case 5:
      return advanced(4);
    default:
      return std::nullopt;
  }
}

std::string_view textOf(std::string_view bytes) {
  return isValidUtf8(bytes) ? bytes : std::string_view{};
}

std::optional<FeishuHeader> decodeHeader(std::string_view bytes) {
  constexpr unsigned lengthDelimited = 2;
  FeishuHeader header;
  for (std::size_t at = 0; at < bytes.size();) {
    const auto tag = readVarint(bytes, at);
    if (!tag || (tag->value & 7U) != lengthDelimited) return std::nullopt;
    const auto field = readLengthDelimited(bytes, tag->next);
    if (!field) return std::nullopt;
    if (tag->value >> 3U == 1) header.key = textOf(field->value);
    if (tag->value >> 3U == 2) header.value = textOf(field->value);
    at = field->next;
  }
  return header;
}

}  // namespace nomely::ProtoReader
