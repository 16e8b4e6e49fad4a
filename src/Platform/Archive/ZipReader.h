#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Archive/ZipError.h"
#include "Platform/Files/FileSystem.h"

namespace nomely {

// One entry as the archive's directory tells it. Everything in it is foreign: a name may be
// anything at all.
struct ZipEntry {
  std::string name;  // raw bytes; a folder's ends in "/"
  std::uint64_t size = 0;
  std::uint64_t compressedSize = 0;
  std::uint64_t headerOffset = 0;
  std::uint32_t checksum = 0;  // CRC-32
  std::uint16_t method = 0;    // 0 stored, 8 deflated
  std::uint16_t flags = 0;
  unsigned mode = 0;  // type and permissions as stat(2) gives them; 0: none told
  Moment modified;    // of field 0x5455 where there is one, else the local DOS time
  bool isFolder() const { return name.ends_with('/'); }
};

// Reads a ZIP archive (PKWARE APPNOTE, ZIP64 included) by its central directory, through
// FileSystem, a piece at a time: memory grows with the number of entries alone, and that is
// bounded by the directory's own size. Safe on any number of threads at once.
//
// Throws ZipError, and FileError where the file can't be read.
class ZipReader {
 public:
  // Reads the directory. Throws FileError (notFound) when there is no such file.
  ZipReader(FileSystem& fileSystem, const std::filesystem::path& path);
  ~ZipReader();
  ZipReader(const ZipReader&) = delete;
  ZipReader& operator=(const ZipReader&) = delete;

  // In the order of the directory.
  [[nodiscard]] const std::vector<ZipEntry>& entries() const { return entries_; }
  // The first of that name; null when there is none.
  [[nodiscard]] const ZipEntry* find(std::string_view name) const;

  // Throws unless local headers say what the directory says and no two entries, nor an entry and
  // the directory, share a byte of the file.
  void checkStructure(const std::stop_token& stop) const;

  using Sink = std::function<void(std::string_view piece)>;
  // Hands on the entry's contents piece by piece. Throws when they are not of the size and checksum
  // told; `sink` never gets more than that size.
  void read(const ZipEntry& entry, const Sink& sink) const;
  // The same as one text. Throws ZipError (tooLarge) for more than `most` bytes, before any is
  // held.
  [[nodiscard]] std::string contents(const ZipEntry& entry, std::uint64_t most) const;

 private:
  std::unique_ptr<File> file_;
  std::uint64_t size_ = 0;
  std::uint64_t directoryOffset_ = 0;
  std::vector<ZipEntry> entries_;
};

}  // namespace nomely
