#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "bench/Random.h"

namespace nomely::bench {

enum class MediaKind { png, jpg, m4a, pdf };

[[nodiscard]] std::string_view extensionOf(MediaKind kind);

// A file that a reader of the kind recognises: its head and tail with bytes between them that no
// archiver makes smaller. Longer than `size` when that is less than head and tail need.
[[nodiscard]] std::string drawMedia(MediaKind kind, std::uint64_t size, Random& random);

}  // namespace nomely::bench
