#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

#include "Platform/Files/DirectoryLock.h"

namespace nomely {

// A folder for temporary files that the user alone can read, which goes with this object. Making
// one sweeps those of the same purpose whose processes died.
class PrivateFolder {
 public:
  // `purpose` becomes part of its name. Throws FileError.
  PrivateFolder(const std::filesystem::path& parent, std::string_view purpose);
  ~PrivateFolder();
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
  std::optional<DirectoryLock> lock_;
};

}  // namespace nomely
