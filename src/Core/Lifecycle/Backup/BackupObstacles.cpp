#include "Core/Lifecycle/Backup/BackupObstacles.h"

#include "Core/Extensions/EngineNames.h"
#include "Core/Extensions/PathNames.h"
#include "Core/Lifecycle/Backup/BackupManifest.h"
#include "Core/Lifecycle/Backup/BackupNames.h"
#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"

namespace nomely {

BackupObstacles::BackupObstacles(FileSystem& fileSystem, std::filesystem::path root,
                                 bool includesVersions)
    : fileSystem_(fileSystem),
      root_(std::move(root)),
      includesVersions_(includesVersions),
      isMounted_(fileSystem.isMountPoint(root_)) {}

bool BackupObstacles::leavesOut(std::string_view name) const {
  const std::string_view last = lastComponent(name);
  if (last == ".DS_Store" || last.starts_with(BackupNames::partialPrefix) ||
      FileManager::isTemporaryName(last) || EngineNames::isFolder(last) ||
      EngineNames::isTemporary(last))
    return true;
  // The rest are entries of the root itself; a manifest there is of an archive unpacked by hand.
  return name == BackupNames::backups || name == ".updates" || name == BackupManifest::fileName ||
         (name == ".versions" && !includesVersions_) ||
         // Closed to all but the administrator.
         (name == "lost+found" && isMounted_) ||
         // Of this machine: a restore leaves what stands there.
         EngineNames::isOwnFile(name);
}

std::string_view BackupObstacles::reason(std::string_view name, FileType type) {
  if (type == FileType::symbolicLink) return "数据目录含符号链接，未生成可能无法恢复的归档";
  if (type == FileType::other) return "数据目录含管道、套接字或设备，请移走后再备份";
  if (lastComponent(name) == BackupNames::backups) return "子目录不能叫 .backups，请改名后再备份";
  if (!BackupNames::isSafe(name)) return "名称含反斜杠或盘符，无法恢复，请改名后再备份";
  return {};
}

std::vector<BackupObstacles::Obstacle> BackupObstacles::find(const std::stop_token& stop) const {
  std::vector<Obstacle> found;
  findIn(root_, "", stop, found);
  return found;
}

void BackupObstacles::findIn(const std::filesystem::path& folder, const std::string& within,
                             const std::stop_token& stop, std::vector<Obstacle>& found) const {
  for (const DirectoryEntry& entry : FileManager(fileSystem_).listAll(folder)) {
    throwIfStopped(stop);
    const std::string name = within + entry.name;
    if (leavesOut(name)) continue;
    const std::string_view why = reason(name, entry.type);
    if (!why.empty()) found.push_back({folder / entry.name, why});
    if (!why.empty() || entry.type != FileType::directory) continue;
    try {
      findIn(folder / entry.name, name + "/", stop, found);
    } catch (const FileError&) {
      // Whoever inspects the root tells of it.
    }
  }
}

}  // namespace nomely
