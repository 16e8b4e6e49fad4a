#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Files/FileSystem.h"

namespace nomely {

// Room for the bytes of one file after another. It grows and never shrinks.
class ReadBuffer {
 public:
  // At least `size` bytes, the first `keep` of them as they were.
  [[nodiscard]] std::span<char> room(std::size_t size, std::size_t keep);

 private:
  std::unique_ptr<char[]> bytes_;
  std::size_t size_ = 0;
};

// What a file held when it was read.
struct FileContent {
  std::string_view bytes;     // in the buffer, till that is used again
  FileAttributes attributes;  // taken before the bytes
};

// A directory held open to go through many of its files, each of which is found from there rather
// than from the root of all paths. Everything throws FileError. For one thread at a time.
class OpenFolder {
 public:
  virtual ~OpenFolder() = default;
  // Puts every entry but "." and ".." into `entries`, in no particular order.
  virtual void list(std::vector<DirectoryEntry>& entries) = 0;
  // The file's bytes, read into `buffer`; absent when there is no such file. One of more than
  // `most` bytes is refused (EFBIG).
  [[nodiscard]] virtual std::optional<FileContent> read(const std::string& name, ReadBuffer& buffer,
                                                        std::uint64_t most) = 0;
};

// Reads what is left of an open file of `attributes`; `read(span)` gives 0 at its end.
template <typename Read, typename Refuse>
[[nodiscard]] FileContent readWhole(const FileAttributes& attributes, ReadBuffer& buffer,
                                    std::uint64_t most, Read read, Refuse refuse) {
  if (attributes.size > most) refuse();
  // One byte more than the size: the usual file then ends with its first read.
  std::span<char> room = buffer.room(static_cast<std::size_t>(attributes.size) + 1, 0);
  std::size_t length = 0;
  while (const std::size_t count = read(room.subspan(length))) {
    length += count;
    if (length > most) refuse();
    if (length == attributes.size && attributes.type == FileType::regular) break;
    if (length == room.size()) room = buffer.room(2 * length, length);
  }
  return {{room.data(), length}, attributes};
}

}  // namespace nomely
