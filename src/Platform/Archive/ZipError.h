#pragma once

#include <string>

#include "Platform/Error.h"

namespace nomely {

// Why a file is no ZIP archive, or not one that can be trusted.
class ZipError : public Error {
 public:
  enum class Kind {
    notAnArchive,  // no end record where one has to be
    truncated,     // what the directory tells lies beyond the end
    damaged,       // bytes that contradict themselves: sizes, checksums, compressed data
    inconsistent,  // entries that overlap, headers unlike the directory
    unsupported,   // encrypted, split, an unknown compression
    tooLarge,      // more than the caller's bound
  };

  // `entry` is the name it is about, if any; control characters in it are shown replaced.
  explicit ZipError(Kind kind, const std::string& entry = {});

  [[nodiscard]] Kind kind() const noexcept { return kind_; }
  // A number for each kind, from 1.
  [[nodiscard]] int status() const noexcept { return static_cast<int>(kind_) + 1; }

 private:
  Kind kind_;
};

}  // namespace nomely
