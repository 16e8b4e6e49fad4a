#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Archive/ZipEntry.h"
#include "Platform/Archive/ZipError.h"
#include "Platform/Files/FileSystem.h"

namespace nomely {

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
  // The same as they lie in the file, which is the quick order to read them in.
  [[nodiscard]] std::vector<const ZipEntry*> inFileOrder() const;
  // The same by their names as bytes; of one name, in the order of the directory.
  [[nodiscard]] const std::vector<const ZipEntry*>& byName() const;
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

  // Reads many entries with the same buffers, quickly those that follow one another in the file.
  // For one thread at a time; the reader has to outlive it.
  class Cursor {
   public:
    explicit Cursor(const ZipReader& archive);
    ~Cursor();
    Cursor(const Cursor&) = delete;
    Cursor& operator=(const Cursor&) = delete;

    // See ZipReader::read. An entry of at most a few hundred KiB comes as one piece, after its
    // checksum was found right.
    void read(const ZipEntry& entry, const Sink& sink);

   private:
    struct Buffers;
    void readWhole(const ZipEntry& entry, std::uint64_t offset, const Sink& sink);
    void readInPieces(const ZipEntry& entry, std::uint64_t offset, const Sink& sink);
    const ZipReader& archive_;
    std::unique_ptr<Buffers> buffers_;
  };

 private:
  std::unique_ptr<File> file_;
  std::uint64_t size_ = 0;
  std::uint64_t directoryOffset_ = 0;
  std::vector<ZipEntry> entries_;
  mutable std::once_flag sorted_;
  mutable std::vector<const ZipEntry*> byName_;
};

}  // namespace nomely
