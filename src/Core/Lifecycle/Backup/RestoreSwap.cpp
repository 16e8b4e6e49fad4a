#include "Core/Lifecycle/Backup/RestoreSwap.h"

#include <cerrno>
#include <utility>

#include <fmt/format.h>

#include "Core/Lifecycle/Backup/BackupError.h"
#include "Core/Lifecycle/Backup/BackupNames.h"
#include "Core/Storage/RescueFolders.h"
#include "Platform/Files/DirectoryLock.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

namespace fs = std::filesystem;

BackupError refused(const std::string& reason) {
  return {BackupError::Kind::restoreFailed, reason};
}

std::optional<std::uint64_t> numberOf(const fs::path& folder, const FileManager& files) {
  const auto found = files.attributes(folder, LinkPolicy::noFollow);
  return found ? std::optional(found->fileNumber) : std::nullopt;
}

// A folder never replaces one that holds anything. So where the file system knows no renaming
// without replacing (rename falls back on link(2), which takes no folders), the plain one will do.
void moveFolder(const fs::path& from, const fs::path& to, const FileManager& files) {
  try {
    files.fileSystem().rename(from, to, Replacement::forbid);
  } catch (const FileError& error) {
    if (error.errorNumber() != EPERM) throw;
    files.fileSystem().rename(from, to, Replacement::allow);
  }
}

}  // namespace

RestoreSwap::RestoreSwap(const StoreContext& context, Places places, bool canExchange,
                         std::function<void(RestoreStep)> beforeStep)
    : files_(context.files),
      gate_(context.gate),
      root_(context.gate.root()),
      places_(std::move(places)),
      canExchange_(canExchange),
      beforeStep_(std::move(beforeStep)),
      former_(numberOf(root_, files_)),
      restored_(numberOf(places_.staging, files_)) {}

bool RestoreSwap::perform() {
  // Other processes that find the new root wait until its `.backups` have come.
  DirectoryLock lock(places_.staging);
  if (lock.attempt() == DirectoryLock::Attempt::busy)
    throw refused(fmt::format("{} 被占用", places_.staging.string()));
  try {
    swap();
  } catch (const std::exception& error) {
    const auto* const file = dynamic_cast<const FileError*>(&error);
    const bool isMount = file && (file->errorNumber() == EBUSY || file->errorNumber() == EXDEV);
    try {
      takeBack();
    } catch (const std::exception& failure) {
      gate_.freeze();
      throw refused(fmt::format("自动回滚失败。请停止使用并保留救援目录：{}。{}",
                                places_.rescue.string(), failure.what()));
    }
    throw refused(
        fmt::format("已保留原数据：{}{}", error.what(),
                    isMount ? "。数据目录不能整体替换，请把备份解压到别处，用 --root 指定" : ""));
  }
  if (former_) RescueFolders::mark(places_.rescue, root_, files_);
  return former_.has_value();
}

void RestoreSwap::swap() {
  if (former_ && canExchange_)
    exchange();
  else
    replace();
  sync(root_.parent_path());
  if (former_ && files_.exists(places_.rescue / BackupNames::backups)) keepBackups();
}

// The restored data waits under the name that the former root is to have, so that there is no
// moment when a former root lies under a name of something left over.
void RestoreSwap::exchange() {
  before(RestoreStep::saveOriginal);
  move(places_.staging, places_.rescue);
  before(RestoreStep::installRestored);
  if (!files_.fileSystem().exchange(root_, places_.rescue)) throw FileError("写入", root_, EINVAL);
}

void RestoreSwap::replace() {
  if (former_) {
    before(RestoreStep::saveOriginal);
    move(root_, places_.rescue);
  }
  before(RestoreStep::installRestored);
  move(places_.staging, root_);
}

void RestoreSwap::keepBackups() {
  before(RestoreStep::preserveBackups);
  move(places_.rescue / BackupNames::backups, root_ / BackupNames::backups);
  // First where they are to be found, so that a power cut leaves them in two places rather than in
  // none.
  sync(root_);
  sync(places_.rescue);
}

void RestoreSwap::takeBack() {
  if (former_ && ownerOf(root_) == Owner::restored && ownerOf(places_.rescue) == Owner::former &&
      files_.exists(root_ / BackupNames::backups)) {
    move(root_ / BackupNames::backups, places_.rescue / BackupNames::backups);
    sync(places_.rescue);
  }
  if (ownerOf(root_) == Owner::restored) {
    if (ownerOf(places_.rescue) == Owner::former && canExchange_)
      (void)files_.fileSystem().exchange(root_, places_.rescue);
    else
      move(root_, places_.staging);
  }
  if (ownerOf(places_.rescue) == Owner::former) move(places_.rescue, root_);
  try {
    if (ownerOf(places_.rescue) == Owner::restored) move(places_.rescue, places_.staging);
    sync(root_.parent_path());
  } catch (const FileError& error) {
    // The root is back, which is what counts.
    Log::error(LogChannel::storage, "⚠️ RestoreSwap.takeBack: {}", error.what());
  }
}

void RestoreSwap::before(RestoreStep step) const {
  if (beforeStep_) beforeStep_(step);
}

RestoreSwap::Owner RestoreSwap::ownerOf(const fs::path& folder) const {
  const auto number = numberOf(folder, files_);
  if (!number) return Owner::nobody;
  if (number == former_) return Owner::former;
  return number == restored_ ? Owner::restored : Owner::nobody;
}

void RestoreSwap::move(const fs::path& from, const fs::path& to) const {
  moveFolder(from, to, files_);
}

void RestoreSwap::sync(const fs::path& folder) const {
  files_.fileSystem().syncDirectory(folder);
}

void RestoreSwap::finishInterrupted(const StoreContext& context) {
  const fs::path& root = context.gate.root();
  const FileManager& files = context.files;
  if (!files.isDirectory(root)) return;
  const std::vector<fs::path> rescues = RescueFolders::of(root, files);
  if (rescues.empty()) return;
  const fs::path left = rescues.front() / BackupNames::backups;
  const fs::path kept = root / BackupNames::backups;
  if (!files.isDirectory(left)) return;
  if (!files.exists(kept)) {
    moveFolder(left, kept, files);
  } else {
    for (const DirectoryEntry& entry : files.listAll(left))
      if (!files.exists(kept / entry.name))
        files.fileSystem().rename(left / entry.name, kept / entry.name, Replacement::forbid);
    files.fileSystem().syncDirectory(kept);
    if (files.listAll(left).empty()) files.fileSystem().remove(left);
  }
  files.fileSystem().syncDirectory(root);
  files.fileSystem().syncDirectory(rescues.front());
}

}  // namespace nomely
