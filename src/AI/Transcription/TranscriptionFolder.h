#pragma once

#include <filesystem>
#include <optional>

#include "Platform/Files/DirectoryLock.h"

namespace nomely {

// A folder for pieces of sound that the user alone can read, which goes with this object. Making
// one sweeps those of processes that died.
class TranscriptionFolder {
 public:
  // Throws FileError.
  explicit TranscriptionFolder(const std::filesystem::path& parent);
  ~TranscriptionFolder();
  TranscriptionFolder(const TranscriptionFolder&) = delete;
  TranscriptionFolder& operator=(const TranscriptionFolder&) = delete;

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
  std::optional<DirectoryLock> lock_;
};

}  // namespace nomely
