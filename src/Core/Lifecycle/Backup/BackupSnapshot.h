#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "Core/Lifecycle/Backup/BackupPack.h"
#include "Core/Lifecycle/Backup/BackupWork.h"
#include "Platform/Files/FileManager.h"

namespace nomely {

// A copy of what a root holds at one moment, in a work folder beside the root, or in its `.backups`
// where there is no such place on the same file system. Left out are `.backups`, `.updates`, what
// engines (EngineNames) keep for themselves, temporaries, manifests of archives that were unpacked
// by hand and, unless asked for, `.versions`.
// The folder goes with this object.
class BackupSnapshot {
 public:
  // `root` is free of links. Chooses the place, makes nothing.
  BackupSnapshot(const FileManager& files, std::filesystem::path root);
  ~BackupSnapshot();
  BackupSnapshot(const BackupSnapshot&) = delete;
  BackupSnapshot& operator=(const BackupSnapshot&) = delete;

  // Inside a write of the root's gate, once. Files that vanish meanwhile are left out: not all
  // writers in the root use the gate. Throws BackupError (snapshotFailed) when there is something
  // that no archive could give back, naming it; FileError, CancellationError.
  void take(bool includesVersions, const BackupWork& work);

  // Any time later.
  [[nodiscard]] std::uint64_t bytes() const { return bytes_; }  // of all files

  using Sink = std::function<void(std::string_view piece)>;
  using Producer = std::function<void(const Sink& sink)>;
  struct Visitor {
    std::function<void(const BackupPack::Record& folder)> folder;
    std::function<void(const BackupPack::Record& file, std::string_view contents)> small;
    // `produce` gives as many bytes as the record tells, or fewer where the file was cut meanwhile.
    std::function<void(const BackupPack::Record& file, const Producer& produce)> large;
  };
  void visit(const Visitor& visitor) const;

 private:
  class Walk;
  void makeFolder();
  [[nodiscard]] std::filesystem::path asideFile(std::uint64_t number) const;
  void produce(const BackupPack::Record& record, const Sink& sink) const;

  FileManager files_;
  std::filesystem::path root_;
  std::filesystem::path folder_;
  std::uint64_t bytes_ = 0;
};

}  // namespace nomely
