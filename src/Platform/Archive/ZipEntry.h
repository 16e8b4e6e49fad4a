#pragma once

#include <cstdint>
#include <string>

#include "Platform/Time/Moment.h"

namespace nomely {

// One entry as an archive's directory tells it. Everything in it is foreign: a name may be anything
// at all.
struct ZipEntry {
  std::string name = {};  // raw bytes; a folder's ends in "/"
  std::uint64_t size = 0;
  std::uint64_t compressedSize = 0;
  std::uint64_t headerOffset = 0;
  std::uint32_t checksum = 0;  // CRC-32
  std::uint16_t method = 0;    // 0 stored, 8 deflated
  std::uint16_t flags = 0;
  unsigned mode = 0;     // type and permissions as stat(2) gives them; 0: none told
  Moment modified = {};  // of field 0x5455 where there is one, else the local DOS time
  [[nodiscard]] bool isFolder() const { return name.ends_with('/'); }
};

}  // namespace nomely
