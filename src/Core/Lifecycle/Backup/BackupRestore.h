#pragma once

#include <filesystem>
#include <functional>

#include "Core/Lifecycle/Backup/BackupArchive.h"
#include "Core/Lifecycle/Backup/RestoreResult.h"
#include "Core/Lifecycle/Backup/RestoreStaging.h"
#include "Core/Storage/StoreContext.h"

namespace nomely {

// One restore of one archive, which is opened at once, so that it can be read wherever its file has
// been moved by then.
class BackupRestore {
 public:
  // Throws what can be told at once: no such file, no archive, no manifest, a root that can't be
  // replaced.
  BackupRestore(const StoreContext& context, const std::filesystem::path& zip);

  [[nodiscard]] bool hasRoot() const;
  // The rest, in the gate, and ends with it frozen: see BackupManager::restore. `safetyCopy` tells
  // whether what can't be read of the root's versions may be left out.
  [[nodiscard]] RestoreResult run(SafetyCopy safetyCopy,
                                  const std::function<void(RestoreStep)>& beforeStep,
                                  const BackupWork& work) const;

 private:
  // Throws for a root that is no folder, or that can't be renamed.
  void checkRoot() const;
  void fill(const RestoreStaging& staging, const BackupArchive::Contents& contents,
            SafetyCopy safetyCopy, const BackupWork& work) const;

  const StoreContext& context_;
  BackupArchive archive_;
};

}  // namespace nomely
