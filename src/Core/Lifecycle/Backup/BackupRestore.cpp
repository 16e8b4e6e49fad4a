#include "Core/Lifecycle/Backup/BackupRestore.h"

#include <cerrno>

#include <fmt/format.h>

#include "Core/Extensions/EngineNames.h"
#include "Core/Lifecycle/Backup/RestoreSwap.h"
#include "Core/Storage/RescueFolders.h"
#include "Core/Storage/RootMarkers.h"
#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Uuid.h"

namespace nomely {
namespace {

namespace fs = std::filesystem;

BackupError refused(const std::string& reason) {
  return {BackupError::Kind::restoreFailed, reason};
}

// Where proving and unpacking end.
constexpr double proven = 0.25;
constexpr double unpacked = 0.95;

}  // namespace

BackupRestore::BackupRestore(const StoreContext& context, const fs::path& zip)
    : context_(context), archive_(context.files.fileSystem(), zip) {
  (void)archive_.manifest();
  checkRoot();
}

bool BackupRestore::hasRoot() const {
  return context_.files.exists(context_.gate.root());
}

void BackupRestore::checkRoot() const {
  const fs::path& root = context_.gate.root();
  if (!hasRoot()) return;
  if (!context_.files.isDirectory(root)) throw FileError("恢复", root, ENOTDIR);
  if (context_.files.fileSystem().isMountPoint(root))
    throw refused(
        fmt::format("数据目录 {} 是挂载点，不能整体替换。请把备份解压到别处，用 --root 指定；"
                    "或者改为把磁盘挂载到它的上一级文件夹",
                    root.string()));
}

RestoreResult BackupRestore::run(SafetyCopy safetyCopy,
                                 const std::function<void(RestoreStep)>& beforeStep,
                                 const BackupWork& work) const {
  return context_.gate.replaceRoot([&] {
    checkRoot();
    RestoreResult restored;
    restored.contents = archive_.prove(work.part(0, proven));
    // What was proven is not read a second time after it was unpacked: each note has been parsed
    // from the archive, and unpacking compares every byte with the archive's checksums once more.
    if (restored.contents.notes == 0) throw refused("备份中没有可恢复的笔记，当前数据未替换");
    const fs::path parent = context_.gate.root().parent_path();
    context_.files.createDirectories(parent);
    const RestoreStaging staging(context_.files, parent);
    fill(staging, restored.contents, safetyCopy, work);

    const fs::path rescue = parent / (std::string(RescueFolders::prefix) + Uuid::random().string());
    throwIfStopped(work.stop);
    if (RestoreSwap(context_, {staging.folder(), rescue}, staging.canExchange(), beforeStep)
            .perform())
      restored.rescue = rescue;
    context_.gate.freeze();
    if (work.progress) work.progress(1);
    return restored;
  });
}

void BackupRestore::fill(const RestoreStaging& staging, const BackupArchive::Contents& contents,
                         SafetyCopy safetyCopy, const BackupWork& work) const {
  const FileManager& files = context_.files;
  const DiskPaths now{context_.gate.root()};
  const DiskPaths next{staging.folder()};
  staging.checkRoomFor(archive_.zip(), contents.bytes);
  staging.unpack(archive_.zip(), work.part(proven, unpacked));
  // Of another machine or another time: this root's own come home after the swap.
  for (const DirectoryEntry& entry : files.listAll(staging.folder()))
    if (EngineNames::isAny(entry.name)) files.removeTree(staging.folder() / entry.name);
  if (!files.exists(next.versionsFolder()) && files.isDirectory(now.versionsFolder()))
    staging.takeOver(now.versionsFolder(), next.versionsFolder().filename(),
                     safetyCopy == SafetyCopy::skip, work.stop);
  // Its memos may have been written before the format that the marker tells of.
  RootMarkers(next, files).forgetMigratedSchemaVersion();
  constexpr unsigned ownerOnly = 0700;
  if (const auto root = files.attributes(now.rootURL))
    files.setPermissions(staging.folder(), root->permissions | ownerOnly);
  throwIfStopped(work.stop);
  files.fileSystem().syncFileSystem(staging.folder());
}

}  // namespace nomely
