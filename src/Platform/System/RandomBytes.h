#pragma once

#include <cstdint>
#include <span>

namespace nomely {

// Fills `bytes` from the kernel's random source. Safe on any thread.
void fillWithRandom(std::span<std::uint8_t> bytes);

}  // namespace nomely
