#include "CLI/ByteCount.h"

#include <array>
#include <cstddef>

#include <fmt/format.h>

namespace nomely {

std::string byteCount(std::uint64_t bytes) {
  constexpr std::array units{"B", "KiB", "MiB", "GiB", "TiB"};
  constexpr double step = 1024;
  auto value = static_cast<double>(bytes);
  std::size_t unit = 0;
  for (; value >= step && unit + 1 < units.size(); ++unit) value /= step;
  return fmt::format("{:.{}f} {}", value, unit == 0 || value >= 100 ? 0 : 1, units[unit]);
}

}  // namespace nomely
