#pragma once

#include <filesystem>
#include <vector>

#include "Core/Lifecycle/Backup/BackupWork.h"
#include "Platform/Archive/ZipReader.h"
#include "Platform/Files/FileManager.h"

namespace nomely {

// A folder beside the root, for its owner alone, in which an archive becomes a root. What is left
// of it goes with this object. Nothing in it has reached the disk until FileSystem::syncFileSystem.
// Throws FileError, BackupError (restoreFailed), CancellationError.
class RestoreStaging {
 public:
  static constexpr std::string_view prefix = ".nomely-staging-";

  RestoreStaging(const FileManager& files, const std::filesystem::path& parent);
  ~RestoreStaging();
  RestoreStaging(const RestoreStaging&) = delete;
  RestoreStaging& operator=(const RestoreStaging&) = delete;

  [[nodiscard]] const std::filesystem::path& folder() const { return folder_; }
  // Whether the disk can let two folders change places in one step.
  [[nodiscard]] bool canExchange() const { return canExchange_; }

  // Throws unless the archive's files can lie here side by side: enough room, and no two names that
  // are one to this disk.
  void checkRoomFor(const ZipReader& zip, std::uint64_t bytes) const;
  // Writes all files of an archive that was proven, with their times; permissions lose what is
  // special in them, and the owner may read and write.
  void unpack(const ZipReader& zip, const BackupWork& work) const;
  // Gives the files below `source` a second name here, or a copy where they can't have one. With
  // `skipsUnreadable` what can't be read is left out.
  void takeOver(const std::filesystem::path& source, const std::filesystem::path& name,
                bool skipsUnreadable, const std::stop_token& stop) const;

 private:
  void probe();
  [[nodiscard]] std::vector<const ZipEntry*> makeFolders(const ZipReader& zip) const;
  void unpackFile(ZipReader::Cursor& zip, const ZipEntry& entry) const;
  void linkOrCopy(const std::filesystem::path& from, const std::filesystem::path& to) const;

  FileManager files_;
  std::filesystem::path folder_;
  bool canExchange_ = false;
  bool foldsCase_ = false;
  unsigned usualPermissions_ = 0;  // of a new file
};

}  // namespace nomely
