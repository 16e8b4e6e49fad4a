#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "Platform/Archive/ZipError.h"
#include "Platform/Files/OpenFolder.h"

namespace nomely {

// Looks at the bytes of a file a stretch at a time, so that going through it in its order takes few
// calls. For one thread at a time.
class FileWindow {
 public:
  // `size` is the file's; `width` is how many bytes are read at once.
  FileWindow(File& file, std::uint64_t size, std::size_t width)
      : file_(file), size_(size), width_(width) {}

  // The `length` bytes at `offset`, till the next call. Throws ZipError (truncated) when the file
  // ends before that, FileError.
  [[nodiscard]] std::string_view at(std::uint64_t offset, std::size_t length) {
    if (length > size_ || offset > size_ - length) throw ZipError(ZipError::Kind::truncated);
    if (offset < start_ || offset + length > start_ + filled_) fill(offset, length);
    return {bytes_ + (offset - start_), length};
  }
  // At most `most` and at least one byte at `offset`, as many as one reading gives.
  [[nodiscard]] std::string_view some(std::uint64_t offset, std::uint64_t most) {
    if (offset >= start_ && offset < start_ + filled_)
      return at(offset, static_cast<std::size_t>(std::min(most, start_ + filled_ - offset)));
    return at(offset, static_cast<std::size_t>(std::min<std::uint64_t>(most, width_)));
  }

 private:
  void fill(std::uint64_t offset, std::size_t length) {
    const std::size_t wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(std::max(width_, length), size_ - offset));
    const std::span<char> room = buffer_.room(wanted, 0).first(wanted);
    filled_ = 0;
    start_ = offset;
    bytes_ = room.data();
    while (filled_ < length) {
      const std::size_t count = file_.readAt(offset + filled_, room.subspan(filled_));
      if (count == 0) throw ZipError(ZipError::Kind::truncated);
      filled_ += count;
    }
  }

  File& file_;
  std::uint64_t size_;
  std::size_t width_;
  ReadBuffer buffer_;
  const char* bytes_ = nullptr;
  std::uint64_t start_ = 0;
  std::size_t filled_ = 0;
};

}  // namespace nomely
