#pragma once

#include <QString>
#include <array>
#include <cstdint>

namespace nomely {

// Moods are numbers in the files; the window shows those of the scale from 1 to 5 as faces.
namespace Moods {

inline constexpr std::array<const char*, 5> faces{"😞", "😕", "😐", "🙂", "😄"};

[[nodiscard]] inline QString face(std::int64_t mood) {
  return mood >= 1 && mood <= static_cast<std::int64_t>(faces.size())
             ? QString::fromUtf8(faces[static_cast<std::size_t>(mood - 1)])
             : QString::number(mood);
}

}  // namespace Moods

}  // namespace nomely
