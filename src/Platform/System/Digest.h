#pragma once

#include <string>
#include <string_view>

namespace nomely {

// Digests by libcrypto, loaded with the first one. Throw LazyLibrary::MissingError. Any thread.

// 20 bytes of SHA-1. No protection against anybody; the opening of a WebSocket asks for it.
[[nodiscard]] std::string sha1(std::string_view bytes);

// 32 bytes of SHA-256.
[[nodiscard]] std::string sha256(std::string_view bytes);

}  // namespace nomely
