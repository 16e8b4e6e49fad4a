#pragma once

#include <filesystem>

#include "Core/Lifecycle/Backup/BackupManifest.h"
#include "Core/Lifecycle/Backup/BackupSnapshot.h"
#include "Core/Lifecycle/Backup/BackupWork.h"

namespace nomely {

// Writes the archive of a snapshot to `target`, which must be free and is the owner's alone, and
// returns when it has reached the disk. The manifest comes last, as it lists the notes that can't
// be read. What is compressed by its kind is stored. What a failure leaves is the caller's to
// remove. Throws BackupError (zipFailed), FileError, CancellationError.
void compressBackup(const BackupSnapshot& snapshot, BackupManifest manifest, FileSystem& fileSystem,
                    const std::filesystem::path& target, const BackupWork& work);

}  // namespace nomely
