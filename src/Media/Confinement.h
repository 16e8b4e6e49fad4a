#pragma once

#include <cstdint>

namespace nomely::media {

// Takes from this process what decoding a foreign file needs least: from here on it can open no
// file, reach no network and start no program, and it dies with whoever started it. What is open
// can be read and written. `memory` counts bytes that it may have. Threads are for decoders that
// know no other way.
enum class Threads { none, some };
void confine(std::uint64_t memory = std::uint64_t{2} << 30, Threads threads = Threads::none);

}  // namespace nomely::media
