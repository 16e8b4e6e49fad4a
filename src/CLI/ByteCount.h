#pragma once

#include <cstdint>
#include <string>

namespace nomely {

// A size for people: 999 → "999 B", 123456 → "121 KiB", 3500000 → "3.3 MiB".
[[nodiscard]] std::string byteCount(std::uint64_t bytes);

}  // namespace nomely
