#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <vector>

#include "Core/Lifecycle/Backup/BackupError.h"
#include "Core/Lifecycle/Backup/BackupManifest.h"
#include "Core/Lifecycle/Backup/BackupWork.h"
#include "Platform/Archive/ZipReader.h"

namespace nomely {

// An archive that is said to be a backup. It is hostile until proven: nothing of it may be written
// anywhere before `prove` has returned. Safe on any thread.
class BackupArchive {
 public:
  // Throws FileError, BackupError (verifyFailed) when it is no ZIP archive.
  BackupArchive(FileSystem& fileSystem, const std::filesystem::path& path);

  [[nodiscard]] const ZipReader& zip() const { return *zip_; }
  // Throws BackupError (manifestNotFound, verifyFailed), JsonError.
  [[nodiscard]] BackupManifest manifest() const;

  struct Contents {
    BackupManifest manifest;
    std::uint64_t notes = 0;  // that can be read
    std::uint64_t files = 0;  // all but the manifest
    std::uint64_t bytes = 0;  // of all files, unpacked
  };
  // Makes all checks that a restore asks for, in this order: structure and the bytes of each entry
  // (verifyFailed); identity and format of the manifest; names, links and special files; notes
  // that can't be read and are not in the manifest's list (restoreFailed, naming the fault). An
  // archive without notes passes. Changes nothing on disk.
  //
  // Whatever passes can be unpacked by the names of its entries in any order, each of them a file
  // or a folder of its own; but `bytes` may be more than a disk holds, and a disk that takes "a"
  // and "A" for the same may find two of one name.
  [[nodiscard]] Contents prove(const BackupWork& work) const;

 private:
  // Reads every entry, and collects the notes that can't be read.
  void readAll(const BackupWork& work, Contents& contents,
               std::vector<const ZipEntry*>& unreadable) const;

  std::unique_ptr<ZipReader> zip_;
};

}  // namespace nomely
