#include "Core/Lifecycle/Backup/RestoreSwap.h"

#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "Core/Extensions/EngineNames.h"
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

// What stays with the root at `folder`. First the files that tell engines what not to move: one
// that finds its mark takes the folder for ready.
std::vector<std::string> keptIn(const fs::path& folder, const FileManager& files) {
  std::vector<std::string> kept;
  for (DirectoryEntry& entry : files.listAll(folder))
    if (entry.name == BackupNames::backups || EngineNames::isFolder(entry.name) ||
        EngineNames::isOwnFile(entry.name))
      kept.push_back(std::move(entry.name));
  std::ranges::stable_partition(kept, EngineNames::isOwnFile);
  return kept;
}

// Into a folder that has been made anew meanwhile.
void mergeBackups(const fs::path& from, const fs::path& to, const FileManager& files) {
  for (const DirectoryEntry& entry : files.listAll(from))
    if (!files.exists(to / entry.name))
      files.fileSystem().rename(from / entry.name, to / entry.name, Replacement::forbid);
  files.fileSystem().syncDirectory(to);
  if (files.listAll(from).empty()) files.fileSystem().remove(from);
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
  if (former_) keep();
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

void RestoreSwap::keep() {
  const std::vector<std::string> kept = keptIn(places_.rescue, files_);
  if (kept.empty()) return;
  before(RestoreStep::preserveBackups);
  for (const std::string& name : kept) move(places_.rescue / name, root_ / name);
  // First where they are to be found, so that a power cut leaves them in two places rather than in
  // none.
  sync(root_);
  sync(places_.rescue);
}

// The restored root came without any of its own.
void RestoreSwap::giveBack() {
  const std::vector<std::string> kept = keptIn(root_, files_);
  for (const std::string& name : kept) move(root_ / name, places_.rescue / name);
  if (!kept.empty()) sync(places_.rescue);
}

void RestoreSwap::takeBack() {
  if (former_ && ownerOf(root_) == Owner::restored && ownerOf(places_.rescue) == Owner::former)
    giveBack();
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
  const std::vector<std::string> left = keptIn(rescues.front(), files);
  if (left.empty()) return;
  for (const std::string& name : left) {
    const fs::path from = rescues.front() / name;
    if (!files.exists(root / name))
      moveFolder(from, root / name, files);
    else if (name == BackupNames::backups)
      mergeBackups(from, root / name, files);
  }
  files.fileSystem().syncDirectory(root);
  files.fileSystem().syncDirectory(rescues.front());
}

}  // namespace nomely
