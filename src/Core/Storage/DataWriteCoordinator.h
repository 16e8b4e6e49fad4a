#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <set>
#include <utility>

#include "Core/Storage/MemoChanges.h"
#include "Platform/Concurrency/SerialQueue.h"
#include "Platform/Files/DirectoryLock.h"
#include "Platform/Files/FileManager.h"

namespace nomely {

// The write gate of one data root: every change of the root runs in it, one at a time, in the order
// in which the writers came. It also keeps other processes of ours out for as long as a write runs.
// Readers take no lock and rely on files being replaced atomically.
//
// Safe on any thread.
class DataWriteCoordinator {
 public:
  // The one gate of that root, the same for every spelling of its path. Neither the root nor the
  // target of a symbolic link in its path has to exist yet. Never destroyed.
  [[nodiscard]] static DataWriteCoordinator& shared(const std::filesystem::path& root);

  // Runs `body` in the gate and returns what it returns; what it throws passes through. Waits for
  // writes that came first. Inside another write of the same gate `body` runs in place. A missing
  // root is made through `files`, see DiskPaths::createRoot. Throws WriteError (maintenance) when
  // frozen, FileError when the root can't be opened, or is gone since an earlier write.
  template <typename Body>
  decltype(auto) write(const FileManager& files, Body&& body) {
    return run(&files, std::forward<Body>(body));
  }
  // The same for who puts another folder in the root's place: a missing root stays missing, and
  // then no other process is kept out.
  template <typename Body>
  decltype(auto) replaceRoot(Body&& body) {
    return run(nullptr, std::forward<Body>(body));
  }

  // Where the root is: absolute, no symbolic link on the way to it.
  [[nodiscard]] const std::filesystem::path& root() const { return root_; }

  // Refuses every later write, nested ones included, until the process ends.
  void freeze();
  [[nodiscard]] bool isFrozen();

  // To be told of each change to memo files, observe this.
  [[nodiscard]] MemoChanges& changes() { return changes_; }

  // Inside a write: makes sure that `folder` exists before something is written to it and, once
  // per process, that no temporary of a writer that died is left there.
  void prepareFolder(const std::filesystem::path& folder, const FileManager& files);
  // Inside a write: removes such temporaries from an existing folder and returns how many.
  std::size_t sweep(const std::filesystem::path& folder, const FileManager& files);

 private:
  class ProcessLock {
   public:
    // Makes a missing root through `files`; null: leaves it missing.
    ProcessLock(DataWriteCoordinator& gate, const FileManager* files);
    ~ProcessLock();
    ProcessLock(const ProcessLock&) = delete;
    ProcessLock& operator=(const ProcessLock&) = delete;

   private:
    DataWriteCoordinator& gate_;
  };

  explicit DataWriteCoordinator(const std::filesystem::path& root);
  void throwIfFrozen();

  template <typename Body>
  decltype(auto) run(const FileManager* files, Body&& body) {
    if (queue_.isCurrent()) {
      throwIfFrozen();
      return std::forward<Body>(body)();
    }
    return queue_.sync([&]() -> decltype(auto) {
      throwIfFrozen();
      const ProcessLock lock(*this, files);
      return std::forward<Body>(body)();
    });
  }

  std::filesystem::path root_;
  SerialQueue queue_{"Nomely.data.write"};
  MemoChanges changes_{queue_};
  std::mutex stateLock_;
  bool frozen_ = false;  // guarded by stateLock_
  // The rest is touched inside a write only.
  DirectoryLock processLock_;
  bool excludesProcesses_ = false;
  std::set<std::filesystem::path> swept_;
};

}  // namespace nomely
