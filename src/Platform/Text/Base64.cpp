#include "Platform/Text/Base64.h"

#include <array>
#include <cstdint>

namespace nomely {
namespace {

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint32_t none = 64;

constexpr std::array<std::uint8_t, 256> valuesOfCharacters() {
  std::array<std::uint8_t, 256> values{};
  values.fill(none);
  for (std::size_t i = 0; i < alphabet.size(); ++i)
    values[static_cast<unsigned char>(alphabet[i])] = static_cast<std::uint8_t>(i);
  return values;
}

std::uint32_t byteAt(std::string_view text, std::size_t at) {
  return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
}

}  // namespace

std::string encodeBase64(std::string_view bytes) {
  std::string text((bytes.size() + 2) / 3 * 4, '=');
  char* to = text.data();
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const std::uint32_t group =
        byteAt(bytes, at) << 16U | byteAt(bytes, at + 1) << 8U | byteAt(bytes, at + 2);
    *to++ = alphabet[group >> 18U];
    *to++ = alphabet[group >> 12U & 63U];
    if (at + 1 < bytes.size()) *to++ = alphabet[group >> 6U & 63U];
    if (at + 2 < bytes.size()) *to++ = alphabet[group & 63U];
  }
  return text;
}

std::optional<std::string> decodeBase64(std::string_view text) {
  static constexpr auto values = valuesOfCharacters();
  if (text.size() % 4 != 0) return std::nullopt;
  const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
  text.remove_suffix(padding);
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3 + 2);
  std::uint32_t group = 0;
  unsigned bits = 0;
  for (const char character : text) {
    const std::uint32_t value = values[static_cast<unsigned char>(character)];
    if (value == none) return std::nullopt;
    group = group << 6U | value;
    bits += 6;
    if (bits < 8) continue;
    bits -= 8;
    bytes += static_cast<char>(group >> bits & 0xFFU);
  }
  return bytes;
}

}  // namespace nomely
