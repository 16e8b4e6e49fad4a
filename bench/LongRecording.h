#pragma once

#include <cstdint>
#include <filesystem>

namespace nomely::bench {

// Writes an m4a file to `target` that plays the plain recording `source` as often as fills `hours`:
// its tables say the same samples again and again, so that it is small and quickly made.
void writeLongRecording(const std::filesystem::path& source, double hours,
                        const std::filesystem::path& target);

}  // namespace nomely::bench
