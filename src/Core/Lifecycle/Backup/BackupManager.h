#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Core/Lifecycle/Backup/BackupArchive.h"
#include "Core/Lifecycle/Backup/BackupError.h"
#include "Core/Lifecycle/Backup/BackupManifest.h"
#include "Core/Lifecycle/Backup/BackupObstacles.h"
#include "Core/Lifecycle/Backup/BackupWork.h"
#include "Core/Lifecycle/Backup/RestoreResult.h"
#include "Core/Storage/StoreContext.h"

namespace nomely {

// One archive in `.backups`.
struct BackupFile {
  std::string name;
  Moment date;  // of the file
  std::uint64_t size = 0;
};

// Of the program, as manifests tell it.
struct BackupVersion {
  std::string app = {};
  std::string build = {};
};

// Keeps dated ZIP copies of the root in its `.backups`, and puts one of them in the root's place.
// Blocking, for background threads; several may run at once. Throws BackupError, FileError,
// WriteError, CancellationError.
class BackupManager {
 public:
  using Version = BackupVersion;
  BackupManager(StoreContext context, std::size_t maxBackups, Version version = {});

  [[nodiscard]] std::size_t maxBackups() const { return maxBackups_; }

  // For tests: run after the snapshot and before its compression, and before each step of a swap.
  std::function<void()> beforeCompression;
  std::function<void(RestoreStep)> beforeRestoreStep;

  // When the newest automatic archive was made, by its file's date; absent without one that can be
  // seen, and when that date lies in the future.
  [[nodiscard]] std::optional<Moment> lastBackupDate() const;
  // Brings `.backups` back where a restore was ended before it did. For the start of a program; a
  // restore begins with it, too. Throws FileError, WriteError.
  void finishInterruptedRestore() const;
  // The archives in `.backups`, by name descending; none where that can't be read.
  [[nodiscard]] std::vector<BackupFile> listBackups() const;
  // Of these the one whose file was made last, whatever its kind.
  [[nodiscard]] std::optional<BackupFile> newestBackup() const;
  [[nodiscard]] std::filesystem::path backupsFolder() const;

  // Makes an automatic archive and removes those that are too many. `kept` is not removed, whatever
  // its age. Returns where the new one lies.
  std::filesystem::path backup(const BackupWork& work = {},
                               const std::filesystem::path& kept = {}) const;
  // The same unless the newest one is younger than `minInterval`. Returns whether it did.
  bool backupIfNeeded(std::chrono::seconds minInterval, const BackupWork& work = {}) const;
  // Makes one archive at `destination`, which must be free, and proves it there under a name of its
  // own before it gets that one. The gate is held while the root is looked at, not while it is
  // compressed.
  void createArchive(const std::filesystem::path& destination, ArchiveKind kind,
                     bool includesVersions, const BackupWork& work) const;
  // The name that an archive made now has: "nomely-auto-2026-03-05_093000-<UUID>.zip", without the
  // identity for the other kinds.
  [[nodiscard]] std::string fileName(ArchiveKind kind) const;

  [[nodiscard]] BackupManifest readManifest(const std::filesystem::path& zip) const;
  // What would keep `backup` from making an archive. See BackupObstacles::find.
  [[nodiscard]] std::vector<BackupObstacles::Obstacle> obstacles(const std::stop_token& stop) const;
  // See BackupArchive::prove.
  [[nodiscard]] BackupArchive::Contents verify(const std::filesystem::path& zip,
                                               const BackupWork& work) const;

  // Puts what the archive holds in the root's place. Until the swap the root is untouched; a swap
  // that fails is taken back. Afterwards this process's gate is frozen. SafetyCopy::skip is for a
  // root too damaged to be backed up.
  RestoreResult restore(const std::filesystem::path& zip, SafetyCopy safetyCopy,
                        const BackupWork& work) const;

 private:
  // In the gate: removes the automatic archives that are too many, `kept` not among them.
  void prune(const std::vector<std::string>& kept) const;

  StoreContext context_;
  std::size_t maxBackups_;
  Version version_;
};

}  // namespace nomely
