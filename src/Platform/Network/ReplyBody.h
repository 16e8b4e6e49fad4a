#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Files/FileError.h"
#include "Platform/System/Descriptor.h"

namespace nomely {

// The body of a reply as it comes: into memory, or into a file, which goes again unless it is
// finished. On one thread.
class ReplyBody {
 public:
  // Makes the file, in place of one by that name. Throws FileError.
  ReplyBody(std::uint64_t most, std::optional<std::filesystem::path> file);
  ~ReplyBody();
  ReplyBody(const ReplyBody&) = delete;
  ReplyBody& operator=(const ReplyBody&) = delete;

  // False when it would exceed `most`, or can't be written.
  [[nodiscard]] bool take(std::string_view bytes) noexcept;
  [[nodiscard]] bool isTooLarge() const noexcept { return isTooLarge_; }
  // Throws the FileError that `take` has met.
  void throwIfUnwritten() const;
  // What was taken, unless it went into the file, which stays from here on. Throws FileError.
  [[nodiscard]] std::string finished();

 private:
  [[nodiscard]] bool write(std::string_view bytes) noexcept;

  const std::uint64_t most_;
  const std::optional<std::filesystem::path> path_;
  Descriptor file_;
  std::string text_;
  std::uint64_t size_ = 0;
  bool isTooLarge_ = false;
  int failure_ = 0;  // an errno
};

}  // namespace nomely
