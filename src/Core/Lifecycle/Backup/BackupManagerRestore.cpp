#include "Core/Lifecycle/Backup/BackupManager.h"
#include "Core/Lifecycle/Backup/BackupRestore.h"
#include "Core/Lifecycle/Backup/RestoreSwap.h"

namespace nomely {

void BackupManager::finishInterruptedRestore() const {
  context_.gate.replaceRoot([&] { RestoreSwap::finishInterrupted(context_); });
}

RestoreResult BackupManager::restore(const std::filesystem::path& zip, SafetyCopy safetyCopy,
                                     const BackupWork& work) const {
  finishInterruptedRestore();
  const BackupRestore restore(context_, zip);
  constexpr double copied = 0.3;  // of the work
  std::filesystem::path copy;
  if (safetyCopy == SafetyCopy::make && restore.hasRoot()) copy = backup(work.part(0, copied), zip);
  RestoreResult restored = restore.run(safetyCopy, beforeRestoreStep, work.part(copied, 1));
  restored.safetyCopy = copy;
  return restored;
}

}  // namespace nomely
