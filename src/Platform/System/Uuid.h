#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <string>

namespace nomely {

// A random UUID (version 4, RFC 9562). Cheap enough to draw one for every memo that is read.
class Uuid {
 public:
  // From the kernel's random source; safe on any thread and after fork.
  [[nodiscard]] static Uuid random();

  // "0F8FAD5B-D9CB-469F-A165-70867728950E"
  [[nodiscard]] std::string string() const;
  // 32 lower-case hexadecimal digits.
  [[nodiscard]] std::string compact() const;

  friend auto operator<=>(const Uuid&, const Uuid&) = default;

 private:
  std::array<std::uint8_t, 16> bytes_{};
};

}  // namespace nomely
