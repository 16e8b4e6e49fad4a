#include "Core/Lifecycle/Backup/BackupManager.h"

#include <algorithm>
#include <cerrno>

#include <fmt/format.h>

#include "Core/Extensions/DateFormatters.h"
#include "Core/Extensions/PathNames.h"
#include "Core/Lifecycle/Backup/BackupCompression.h"
#include "Core/Lifecycle/Backup/BackupNames.h"
#include "Core/Lifecycle/Backup/BackupPruning.h"
#include "Core/Lifecycle/Backup/BackupSnapshot.h"
#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"
#include "Platform/System/Uuid.h"

namespace nomely {
namespace {

using std::filesystem::path;

constexpr unsigned ownerOnly = 0700;

// A file that goes with this object unless it has been renamed by then.
class Partial {
 public:
  Partial(const FileManager& files, const path& folder)
      : files_(files),
        path_(folder /
              (BackupNames::partialPrefix + Uuid::random().string() + BackupNames::partialSuffix)) {
  }
  ~Partial() {
    try {
      files_.fileSystem().remove(path_);
    } catch (const FileError&) {
      // Dead weight; why the archive was not made is what matters.
    }
  }
  Partial(const Partial&) = delete;
  Partial& operator=(const Partial&) = delete;

  [[nodiscard]] const path& name() const { return path_; }

 private:
  FileManager files_;
  path path_;
};

// Gives a finished archive its name, which must be free, for good.
void place(const FileManager& files, const path& from, const path& to) {
  try {
    files.fileSystem().rename(from, to, Replacement::forbid);
  } catch (const FileError&) {
    // exFAT knows neither renaming without replacement nor a second name.
    if (files.exists(to)) throw;
    files.fileSystem().rename(from, to, Replacement::allow);
  }
  files.fileSystem().syncDirectory(to.parent_path());
}

}  // namespace

BackupManager::BackupManager(StoreContext context, std::size_t maxBackups, Version version)
    : context_(std::move(context)), maxBackups_(maxBackups), version_(std::move(version)) {}

path BackupManager::backupsFolder() const {
  return context_.paths.rootURL / BackupNames::backups;
}

std::vector<BackupFile> BackupManager::listBackups() const {
  std::vector<BackupFile> found;
  try {
    for (const DirectoryEntry& entry : context_.files.listVisible(backupsFolder())) {
      if (entry.type != FileType::regular || lowerCaseExtension(entry.name) != "zip") continue;
      const auto attributes = context_.files.attributes(backupsFolder() / entry.name);
      found.push_back({entry.name, attributes ? attributes->modified : context_.clock.now(),
                       attributes ? attributes->size : 0});
    }
  } catch (const FileError&) {
    return {};
  }
  std::ranges::reverse(found);
  return found;
}

std::optional<BackupFile> BackupManager::newestBackup() const {
  const std::vector<BackupFile> backups = listBackups();
  const auto newest = std::ranges::max_element(backups, {}, &BackupFile::date);
  return newest == backups.end() ? std::nullopt : std::optional(*newest);
}

std::optional<Moment> BackupManager::lastBackupDate() const {
  const std::vector<BackupFile> backups = listBackups();
  const auto newest = std::ranges::find_if(
      backups, [](const BackupFile& file) { return BackupPruning::isAutomatic(file.name); });
  if (newest == backups.end() || newest->date > context_.clock.now()) return std::nullopt;
  return newest->date;
}

std::string BackupManager::fileName(ArchiveKind kind) const {
  const std::string stem =
      fmt::format("nomely-{}-{}", fileNamePart(kind),
                  DateFormatters::fileNameTimestamp.format(context_.clock.now()));
  return kind == ArchiveKind::automatic ? fmt::format("{}-{}.zip", stem, Uuid::random().string())
                                        : stem + ".zip";
}

path BackupManager::backup(const BackupWork& work, const path& kept) const {
  const std::string name = fileName(ArchiveKind::automatic);
  createArchive(backupsFolder() / name, ArchiveKind::automatic, false, work);
  context_.write([&] { prune({name, kept.filename().string()}); });
  return backupsFolder() / name;
}

bool BackupManager::backupIfNeeded(std::chrono::seconds minInterval, const BackupWork& work) const {
  const std::optional<Moment> last = lastBackupDate();
  if (last && context_.clock.now() - *last < minInterval) return false;
  (void)backup(work);
  return true;
}

void BackupManager::prune(const std::vector<std::string>& kept) const {
  std::vector<std::string> names;
  for (const DirectoryEntry& entry : context_.files.listVisible(backupsFolder()))
    if (entry.type == FileType::regular) names.push_back(entry.name);
  for (const std::string& name : BackupPruning::superfluous(std::move(names), maxBackups_, kept))
    context_.files.removeFile(backupsFolder() / name);
}

void BackupManager::createArchive(const path& destination, ArchiveKind kind, bool includesVersions,
                                  const BackupWork& work) const {
  throwIfStopped(work.stop);
  FileSystem& fileSystem = context_.files.fileSystem();
  if (context_.files.exists(destination)) throw FileError("新建", destination, EEXIST);
  const path folder = destination.parent_path();
  BackupManifest manifest{.archiveKind = kind,
                          .sourcePath = context_.paths.rootURL.string(),
                          .includesVersions = includesVersions,
                          .appVersion = version_.app,
                          .buildNumber = version_.build};

  const Partial partial(context_.files, folder);
  BackupSnapshot snapshot(context_.files, context_.gate.root());
  context_.write([&] {
    const auto begun = std::chrono::steady_clock::now();
    context_.files.createDirectories(folder, ownerOnly);
    manifest.createdAt = context_.clock.now();
    snapshot.take(includesVersions, work.part(0, 0.2));
    const std::chrono::duration<double, std::milli> held = std::chrono::steady_clock::now() - begun;
    Log::information(LogChannel::storage, "备份副本写入占用：{:f} ms", held.count());
  });
  throwIfStopped(work.stop);
  if (beforeCompression) beforeCompression();
  compressBackup(snapshot, std::move(manifest), fileSystem, partial.name(), work.part(0.2, 0.7));
  (void)BackupArchive(fileSystem, partial.name())
      .prove(work.part(0.7, 1), BackupArchive::Notes::asListed);
  throwIfStopped(work.stop);
  context_.write([&] { place(context_.files, partial.name(), destination); });
  if (work.progress) work.progress(1);
}

std::vector<BackupObstacles::Obstacle> BackupManager::obstacles(const std::stop_token& stop) const {
  return BackupObstacles(context_.files.fileSystem(), context_.gate.root(), false).find(stop);
}

BackupManifest BackupManager::readManifest(const path& zip) const {
  return BackupArchive(context_.files.fileSystem(), zip).manifest();
}

BackupArchive::Contents BackupManager::verify(const path& zip, const BackupWork& work) const {
  return BackupArchive(context_.files.fileSystem(), zip).prove(work);
}

}  // namespace nomely
