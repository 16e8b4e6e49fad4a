#pragma once

#include <filesystem>
#include <stop_token>
#include <string_view>
#include <vector>

#include "Platform/Files/FileManager.h"

namespace nomely {

// Which entries of a root an archive takes up, and which of these keep it from being made, since a
// restore would refuse it. Names are relative to the root, with "/" between components.
class BackupObstacles {
 public:
  struct Obstacle {
    std::filesystem::path path;
    std::string_view reason;  // a literal, in Chinese
  };

  // `root` is free of links.
  BackupObstacles(FileSystem& fileSystem, std::filesystem::path root, bool includesVersions);

  // Whether an archive does without that entry: backups, temporaries, what other systems and
  // engines leave anywhere, the file system's own.
  [[nodiscard]] bool leavesOut(std::string_view name) const;
  // Why an entry of that type can't stand in an archive; empty when it can.
  [[nodiscard]] static std::string_view reason(std::string_view name, FileType type);

  // All that stands in the way of a backup. Folders that can't be listed are passed over. Throws
  // FileError when the root can't be, CancellationError.
  [[nodiscard]] std::vector<Obstacle> find(const std::stop_token& stop) const;

 private:
  void findIn(const std::filesystem::path& folder, const std::string& within,
              const std::stop_token& stop, std::vector<Obstacle>& found) const;

  FileSystem& fileSystem_;
  std::filesystem::path root_;
  bool includesVersions_;
  bool isMounted_;
};

}  // namespace nomely
