#pragma once

#include <string>
#include <string_view>

namespace nomely {

// The 20 bytes of the SHA-1 digest, by libcrypto, loaded with the first one. No protection against
// anybody; the opening of a WebSocket asks for it. Throws LazyLibrary::MissingError. Any thread.
[[nodiscard]] std::string sha1(std::string_view bytes);

}  // namespace nomely
