#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace nomely::fuzz {

// Ends the run with a finding. An assertion that no build switches off.
inline void require(bool holds) {
  if (!holds) std::abort();
}

[[nodiscard]] inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

// Numbers out of the fuzzer's bytes; zeros when they are used up.
class Bytes {
 public:
  Bytes(const std::uint8_t* data, std::size_t size) : rest_(textOf(data, size)) {}

  std::uint32_t below(std::uint32_t bound) {
    std::uint32_t value = next();
    if (bound > 256) value = value << 8U | next();
    return value % bound;
  }

 private:
  std::uint32_t next() {
    if (rest_.empty()) return 0;
    const auto byte = static_cast<unsigned char>(rest_.front());
    rest_.remove_prefix(1);
    return byte;
  }

  std::string_view rest_;
};

}  // namespace nomely::fuzz
