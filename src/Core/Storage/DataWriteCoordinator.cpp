#include "Core/Storage/DataWriteCoordinator.h"

#include <cerrno>
#include <deque>
#include <map>

#include "Core/Storage/DiskPaths.h"
#include "Core/Storage/RootMarkers.h"
#include "Core/Storage/WriteError.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

namespace fs = std::filesystem;

// The path that `root` will have once everything on the way to it exists: absolute, and with each
// symbolic link replaced by what it names though that be missing. Two spellings that name the same
// folder later have to share a gate from the beginning, or they would wait for each other's lock.
fs::path resolved(const fs::path& root) {
  constexpr int mostLinks = 40;  // as many as the kernel follows
  std::error_code failed;
  const fs::path whole = fs::absolute(root, failed);
  std::deque<fs::path> left(whole.begin(), whole.end());
  fs::path done;
  for (int links = 0; !left.empty();) {
    const fs::path name = std::move(left.front());
    left.pop_front();
    if (name.empty() || name == ".") continue;
    if (name == "..") {
      done = done.parent_path();
      continue;
    }
    const fs::path next = done / name;
    if (links == mostLinks || !fs::is_symlink(fs::symlink_status(next, failed))) {
      done = next;
      continue;
    }
    ++links;
    const fs::path target = fs::read_symlink(next, failed);
    left.insert(left.begin(), target.begin(), target.end());
    if (target.is_absolute()) done.clear();
  }
  return done;
}

}  // namespace

DataWriteCoordinator& DataWriteCoordinator::shared(const std::filesystem::path& root) {
  using Gates = std::map<std::filesystem::path, std::unique_ptr<DataWriteCoordinator>>;
  static std::mutex registryLock;
  static auto* const gates = new Gates;  // writers may outlive the statics of other files

  const std::filesystem::path key = resolved(root);
  const std::lock_guard lock(registryLock);
  std::unique_ptr<DataWriteCoordinator>& gate = (*gates)[key];
  if (!gate) gate.reset(new DataWriteCoordinator(key));
  return *gate;
}

DataWriteCoordinator::DataWriteCoordinator(const std::filesystem::path& root)
    : root_(root), processLock_(root) {}

void DataWriteCoordinator::throwIfFrozen() {
  if (isFrozen()) throw WriteError(WriteError::Kind::maintenance);
}

void DataWriteCoordinator::freeze() {
  const std::lock_guard lock(stateLock_);
  frozen_ = true;
}

bool DataWriteCoordinator::isFrozen() {
  const std::lock_guard lock(stateLock_);
  return frozen_;
}

void DataWriteCoordinator::prepareFolder(const std::filesystem::path& folder,
                                         const FileManager& files) {
  files.createDirectories(folder);
  if (!excludesProcesses_ || !swept_.insert(folder).second) return;
  sweep(folder, files);
}

std::size_t DataWriteCoordinator::sweep(const std::filesystem::path& folder,
                                        const FileManager& files) {
  // Without the lock, a temporary may be another process's write under way.
  if (!excludesProcesses_) return 0;
  try {
    const std::size_t count = files.sweepTemporaries(folder);
    if (count > 0)
      Log::information(LogChannel::storage, "已清理 {} 个残留的临时文件：{}", count,
                       folder.string());
    return count;
  } catch (const FileError& error) {
    Log::error(LogChannel::storage, "⚠️ DataWriteCoordinator.sweep: {}", error.what());
    return 0;
  }
}

DataWriteCoordinator::ProcessLock::ProcessLock(DataWriteCoordinator& gate, const FileManager* files)
    : gate_(gate) {
  const DiskPaths paths{gate.root_};
  if (files != nullptr && !files->isDirectory(gate.root_)) {
    // One that this process has written in was moved away, or its disk was: an empty one in its
    // place would hide that.
    if (gate.swept_.contains(gate.root_)) throw FileError("打开", gate.root_, ENOENT);
    paths.createRoot(*files);
  }
  try {
    gate.excludesProcesses_ = gate.processLock_.lock(
        [] { Log::information(LogChannel::storage, "另一个 Nomely 进程正在写入，等待其完成"); });
  } catch (const FileError& error) {
    if (files != nullptr || error.kind() != FileError::Kind::notFound) throw;
    gate.excludesProcesses_ = false;
    return;
  }
  if (!gate.excludesProcesses_)
    Log::error(LogChannel::storage,
               "⚠️ DataWriteCoordinator.write: "
               "此文件系统不支持文件锁，请勿同时运行多个 "
               "Nomely：{}",
               gate.root_.string());
  // Once a process: no note of ours may stand in a root that was empty and isn't marked.
  if (files == nullptr || gate.swept_.contains(gate.root_)) return;
  try {
    RootMarkers(paths, *files).claimIfEmpty();
    gate.swept_.insert(gate.root_);
  } catch (...) {
    gate.processLock_.unlock();
    throw;
  }
}

DataWriteCoordinator::ProcessLock::~ProcessLock() {
  gate_.processLock_.unlock();
}

}  // namespace nomely
