#pragma once

#include <cstdint>
#include <vector>

#include "Platform/Archive/ZipEntry.h"
#include "Platform/Archive/ZipError.h"
#include "Platform/Files/FileSystem.h"

namespace nomely {

// The central directory at the end of a ZIP archive.
struct ZipDirectory {
  std::uint64_t offset = 0;  // where the entries' own bytes end
  std::vector<ZipEntry> entries;

  // Reads that of an archive of `size` bytes. Throws ZipError, FileError. An archive that begins
  // anywhere but at the file's first byte is refused, as others would read it otherwise.
  [[nodiscard]] static ZipDirectory read(File& file, std::uint64_t size);
};

}  // namespace nomely
