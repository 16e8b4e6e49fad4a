#include "Core/Lifecycle/Backup/BackupLeftovers.h"

#include <array>
#include <chrono>

#include "Core/Lifecycle/Backup/BackupNames.h"
#include "Core/Lifecycle/Backup/RestoreStaging.h"
#include "Core/Storage/RescueFolders.h"
#include "Platform/Files/FileError.h"

namespace nomely {
namespace {

namespace fs = std::filesystem;

bool isWork(std::string_view name) {
  return name.starts_with(RestoreStaging::prefix) || name.starts_with(BackupNames::workPrefix) ||
         (name.starts_with(BackupNames::partialPrefix) &&
          name.ends_with(BackupNames::partialSuffix));
}

std::uint64_t bytesIn(const fs::path& path, const FileManager& files) {
  try {
    const auto found = files.attributes(path, LinkPolicy::noFollow);
    if (!found) return 0;
    if (found->type != FileType::directory) return found->size;
    std::uint64_t bytes = 0;
    for (const DirectoryEntry& entry : files.fileSystem().list(path))
      bytes += bytesIn(path / entry.name, files);
    return bytes;
  } catch (const FileError&) {
    return 0;
  }
}

}  // namespace

BackupLeftovers BackupLeftovers::find(const StoreContext& context) {
  const FileManager& files = context.files;
  const fs::path& root = context.gate.root();
  const auto itemAt = [&](const fs::path& path) {
    const auto found = files.attributes(path, LinkPolicy::noFollow).value_or(FileAttributes{});
    return Item{path, bytesIn(path, files), found.modified};
  };
  BackupLeftovers leftovers;
  for (const fs::path& rescue : RescueFolders::of(root, files))
    leftovers.rescues.push_back({itemAt(rescue), RescueFolders::wayBack(rescue, root),
                                 files.exists(rescue / BackupNames::backups)});

  const Moment recent = context.clock.now() - std::chrono::days(1);
  for (const fs::path& folder : {root.parent_path(), root / BackupNames::backups}) {
    if (!files.isDirectory(folder)) continue;
    for (const DirectoryEntry& entry : files.listAll(folder)) {
      if (!isWork(entry.name)) continue;
      const fs::path path = folder / entry.name;
      const auto found = files.attributes(path, LinkPolicy::noFollow);
      if (found && found->modified < recent) leftovers.abandoned.push_back(itemAt(path));
    }
  }
  return leftovers;
}

}  // namespace nomely
