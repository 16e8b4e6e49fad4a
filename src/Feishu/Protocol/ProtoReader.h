#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "Feishu/Protocol/FeishuHeader.h"

namespace nomely {

// What a message in Protocol Buffers' encoding is made of. Each reads what begins at `at` (at most
// the buffer's size), and is absent when that is not there whole. Pure.
namespace ProtoReader {

struct Number {
  std::uint64_t value = 0;
  std::size_t next = 0;  // where what follows begins
};
// Seven bits a byte, the lowest first: "\x96\x01" → 150. Ten bytes at most; bits past the 64th are
// dropped.
[[nodiscard]] std::optional<Number> readVarint(std::string_view buffer, std::size_t at);

struct Bytes {
  std::string_view value;  // of the buffer
  std::size_t next = 0;
};
// A length, and as many bytes: "\x02hi" → "hi".
[[nodiscard]] std::optional<Bytes> readLengthDelimited(std::string_view buffer, std::size_t at);

// The end of the value of a field of that wire type; absent for groups too, and for types that
// there are none of.
[[nodiscard]] std::optional<std::size_t> skipField(std::string_view buffer, std::size_t at,
                                                   unsigned wireType);

// A text, or "" for bytes that are not UTF-8.
[[nodiscard]] std::string_view textOf(std::string_view bytes);

// Absent when a field is of another wire type than the length-delimited one.
[[nodiscard]] std::optional<FeishuHeader> decodeHeader(std::string_view bytes);

}  // namespace ProtoReader

}  // namespace nomely
