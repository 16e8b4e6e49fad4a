#include "Core/Storage/DerivedIdentity.h"

#include <cstdint>

#include <fmt/format.h>

#include "Platform/System/Digest.h"

namespace nomely {
namespace {

std::string hexadecimal(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const char byte : bytes) text += fmt::format("{:02x}", static_cast<unsigned char>(byte));
  return text;
}

// The 32 digits of a UUID.
std::string digitsOf(std::string_view kind, DerivedIdentity::Parts parts) {
  std::string all;
  const auto add = [&](std::string_view part) {
    all.append(fmt::format("{}:", part.size())) += part;
  };
  add(kind);
  for (const std::string_view part : parts) add(part);
  std::string bytes = sha256(all).substr(0, 16);
  const auto mark = [&](std::size_t at, unsigned kept, unsigned set) {
    bytes[at] = static_cast<char>((static_cast<unsigned char>(bytes[at]) & kept) | set);
  };
  mark(6, 0x0FU, 0x80U);
  mark(8, 0x3FU, 0x80U);
  return hexadecimal(bytes);
}

}  // namespace

std::string DerivedIdentity::uuid(std::string_view kind, Parts parts) {
  std::string text = digitsOf(kind, parts);
  for (char& digit : text)
    if (digit >= 'a') digit = static_cast<char>(digit - 'a' + 'A');
  for (const std::size_t at : {8U, 13U, 18U, 23U}) text.insert(at, 1, '-');
  return text;
}

std::string DerivedIdentity::memoId(std::string_view kind, Parts parts) {
  return "memo_" + digitsOf(kind, parts);
}

std::string DerivedIdentity::contentMark(std::string_view bytes) {
  return hexadecimal(sha256(bytes).substr(0, 4));
}

}  // namespace nomely
