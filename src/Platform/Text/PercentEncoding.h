#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace nomely {

// Percent-encoding of URLs (RFC 3986). Pure.

// "a%20b" → "a b"; the bytes need be no UTF-8. Absent where a "%" begins nothing.
[[nodiscard]] std::optional<std::string> percentDecoded(std::string_view text);
// "a b" → "a%20b": all but unreserved characters are encoded.
[[nodiscard]] std::string percentEncoded(std::string_view text);

}  // namespace nomely
