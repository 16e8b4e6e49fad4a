#include "Import/FlomoSource.h"

#include <algorithm>

#include "Platform/Text/Ascii.h"

namespace nomely {
namespace {

// "%E4%BD" → its two bytes; the text as it stands where a "%" begins nothing.
std::string withoutPercents(std::string_view text) {
  const auto digit = [](char c) {
    const char lowered = loweredAscii(c);
    if (c >= '0' && c <= '9') return c - '0';
    return lowered >= 'a' && lowered <= 'f' ? lowered - 'a' + 10 : -1;
  };
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      decoded += text[i];
      continue;
    }
    const int high = i + 2 < text.size() ? digit(text[i + 1]) : -1;
    const int low = i + 2 < text.size() ? digit(text[i + 2]) : -1;
    if (high < 0 || low < 0) return std::string(text);
    decoded += static_cast<char>(high * 16 + low);
    i += 2;
  }
  return decoded;
}

bool isOnTheWeb(std::string_view reference) {
  return equalsIgnoringAsciiCase(reference.substr(0, 7), "http://") ||
         equalsIgnoringAsciiCase(reference.substr(0, 8), "https://");
}

}  // namespace

std::string FlomoSource::normalizedMediaRef(std::string_view reference) {
  const std::string decoded = withoutPercents(reference.substr(0, reference.find('?')));
  return decoded.substr(std::min(decoded.find_first_not_of('/'), decoded.size()));
}

FlomoSource::Media FlomoSource::media(std::string_view reference) {
  if (isOnTheWeb(reference)) return {};
  const std::string normalized = normalizedMediaRef(reference);
  const bool isName = !normalized.empty() && normalized.find('\0') == std::string::npos;
  return isName && !isOnTheWeb(normalized) ? find(normalized) : Media();
}

}  // namespace nomely
