#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <string_view>

#include "Platform/Files/FileSystem.h"

namespace nomely {

// What a root held at one moment, in the order in which it was looked at, as one file: a record for
// each folder and file, followed by the contents of the small ones. Small files cost one write
// together where a copy or a link each would cost a journal entry, and are gone with one removal;
// memory does not grow with their number.
namespace BackupPack {

enum class Type : std::uint8_t {
  folder,
  held,   // the contents follow
  aside,  // the contents stand in a file of their own
};

struct Record {
  Type type = Type::folder;
  std::string name;  // relative to the root; a folder's ends in "/"
  unsigned permissions = 0;
  Moment modified;
  std::uint64_t size = 0;
  std::uint64_t number = 0;  // of the file of its own
};

// For one thread. Throws FileError.
class Writer {
 public:
  // `path` must be free, in a folder that its owner alone can enter.
  Writer(FileSystem& fileSystem, const std::filesystem::path& path);
  void add(const Record& record, std::string_view contents);
  void finish();

 private:
  void write(std::string_view bytes);
  // Returns when the buffer that was handed over has been written.
  void settle();

  std::unique_ptr<File> file_;
  std::string buffer_;
  std::string handedOver_;
  std::future<void> writing_;  // `handedOver_`, while the next buffer fills
};

// Hands on every record with the contents that follow it, which are there during the call. Throws
// FileError, and ZipError (truncated) for a pack that was never finished.
void read(FileSystem& fileSystem, const std::filesystem::path& path,
          const std::function<void(const Record& record, std::string_view contents)>& take);

}  // namespace BackupPack

}  // namespace nomely
