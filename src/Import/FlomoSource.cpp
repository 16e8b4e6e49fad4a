#include "Import/FlomoSource.h"

#include <algorithm>

#include "Platform/Text/Ascii.h"
#include "Platform/Text/PercentEncoding.h"

namespace nomely {
namespace {

bool isOnTheWeb(std::string_view reference) {
  return equalsIgnoringAsciiCase(reference.substr(0, 7), "http://") ||
         equalsIgnoringAsciiCase(reference.substr(0, 8), "https://");
}

}  // namespace

std::string FlomoSource::normalizedMediaRef(std::string_view reference) {
  const std::string_view path = reference.substr(0, reference.find('?'));
  const std::string decoded = percentDecoded(path).value_or(std::string(path));
  return decoded.substr(std::min(decoded.find_first_not_of('/'), decoded.size()));
}

FlomoSource::Media FlomoSource::media(std::string_view reference) {
  if (isOnTheWeb(reference)) return {};
  const std::string normalized = normalizedMediaRef(reference);
  const bool isName = !normalized.empty() && normalized.find('\0') == std::string::npos;
  return isName && !isOnTheWeb(normalized) ? find(normalized) : Media();
}

}  // namespace nomely
