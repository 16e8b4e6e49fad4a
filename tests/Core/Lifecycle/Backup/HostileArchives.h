#pragma once

#include <ostream>
#include <string>
#include <vector>

#include <sys/stat.h>

#include "Core/Lifecycle/Backup/BackupError.h"

namespace nomely::test {

// An entry of an archive that is written byte by byte, so that anything in it can be wrong.
struct RawEntry {
  std::string name;
  std::string contents = {};  // as they stand in the file
  unsigned mode = S_IFREG | 0644;
  std::uint16_t method = 0;
  std::uint16_t flags = 0;
  // What the directory tells instead of the truth, each by so much too much.
  std::uint32_t excessSize = 0;
  std::uint32_t excessChecksum = 0;
  std::uint32_t excessOffset = 0;
  std::string localName = {};  // empty: the same
};
struct RawEnd {
  std::uint16_t excessCount = 0;
  std::uint16_t disk = 0;
  std::uint32_t excessOffset = 0;
};
[[nodiscard]] std::string rawZip(const std::vector<RawEntry>& entries, RawEnd end = {});

// A manifest and one note: what a backup of a small root is.
[[nodiscard]] std::vector<RawEntry> goodEntries();

struct HostileArchive {
  std::string name;
  std::string bytes;
  std::string message;  // that refuses it

  friend void PrintTo(const HostileArchive& archive, std::ostream* stream) {
    *stream << archive.name;
  }
};
// None of them may be restored, nor may anything of them be written.
[[nodiscard]] std::vector<HostileArchive> hostileArchives();

}  // namespace nomely::test
