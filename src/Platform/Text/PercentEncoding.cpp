#include "Platform/Text/PercentEncoding.h"

#include <fmt/format.h>

#include "Platform/Text/Ascii.h"

namespace nomely {
namespace {

int hexDigit(char c) {
  const char lowered = loweredAscii(c);
  if (c >= '0' && c <= '9') return c - '0';
  return lowered >= 'a' && lowered <= 'f' ? lowered - 'a' + 10 : -1;
}

bool isUnreserved(char c) {
  const char lowered = loweredAscii(c);
  return (c >= '0' && c <= '9') || (lowered >= 'a' && lowered <= 'z') || c == '-' || c == '.' ||
         c == '_' || c == '~';
}

}  // namespace

std::optional<std::string> percentDecoded(std::string_view text) {
  std::string decoded;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '%') {
      decoded += text[at];
      continue;
    }
    const int high = at + 2 < text.size() ? hexDigit(text[at + 1]) : -1;
    const int low = at + 2 < text.size() ? hexDigit(text[at + 2]) : -1;
    if (high < 0 || low < 0) return std::nullopt;
    decoded += static_cast<char>(high * 16 + low);
    at += 2;
  }
  return decoded;
}

std::string percentEncoded(std::string_view text) {
  std::string encoded;
  for (const char c : text)
    encoded +=
        isUnreserved(c) ? std::string(1, c) : fmt::format("%{:02X}", static_cast<unsigned char>(c));
  return encoded;
}

}  // namespace nomely
