#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// The records of a ZIP archive: numbers are little-endian, and a number that has no room is all
// ones, its value standing in the ZIP64 field (0x0001) instead.
namespace nomely::zip {

inline constexpr std::uint32_t localHeader = 0x04034b50;
inline constexpr std::uint32_t directoryHeader = 0x02014b50;
inline constexpr std::uint32_t endRecord = 0x06054b50;
inline constexpr std::uint32_t end64Record = 0x06064b50;
inline constexpr std::uint32_t end64Locator = 0x07064b50;

// Without names, fields and comments.
inline constexpr std::size_t localHeaderSize = 30;
inline constexpr std::size_t directoryHeaderSize = 46;
inline constexpr std::size_t endRecordSize = 22;
inline constexpr std::size_t end64RecordSize = 56;
inline constexpr std::size_t end64LocatorSize = 20;

inline constexpr std::uint16_t field64 = 0x0001;
inline constexpr std::uint16_t fieldTime = 0x5455;  // "UT"

inline constexpr std::uint16_t full16 = 0xffff;
inline constexpr std::uint32_t full32 = 0xffffffff;

inline constexpr std::uint16_t stored = 0;
inline constexpr std::uint16_t deflated = 8;

inline constexpr std::uint16_t flagEncrypted = 1U << 0;
inline constexpr std::uint16_t flagDescriptor = 1U << 3;  // sizes follow the contents
inline constexpr std::uint16_t flagStronglyEncrypted = 1U << 6;
inline constexpr std::uint16_t flagUtf8 = 1U << 11;
inline constexpr std::uint16_t flagMasked = 1U << 13;  // local headers tell nothing

// The number of `Number`'s width at `offset`, which has to lie in `bytes`.
template <typename Number>
[[nodiscard]] Number numberAt(std::string_view bytes, std::size_t offset) {
  Number number = 0;
  for (std::size_t i = sizeof(Number); i-- > 0;)
    number = static_cast<Number>((std::uint64_t{number} << 8) |
                                 static_cast<unsigned char>(bytes[offset + i]));
  return number;
}

template <typename Number>
void append(std::string& bytes, Number number) {
  for (std::size_t i = 0; i < sizeof(Number); ++i)
    bytes += static_cast<char>((std::uint64_t{number} >> (8 * i)) & 0xff);
}

// The contents of the first extra field of that kind; empty when there is none. What comes after a
// field that claims more than there is, is ignored: some writers pad with anything.
[[nodiscard]] inline std::string_view extraField(std::string_view fields, std::uint16_t kind) {
  while (fields.size() >= 4) {
    const std::size_t length = numberAt<std::uint16_t>(fields, 2);
    if (length > fields.size() - 4) break;
    if (numberAt<std::uint16_t>(fields, 0) == kind) return fields.substr(4, length);
    fields.remove_prefix(4 + length);
  }
  return {};
}

}  // namespace nomely::zip
