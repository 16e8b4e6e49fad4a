#pragma once

#include <filesystem>
#include <functional>

#include <sys/types.h>

namespace nomely {

// An advisory lock on a directory that excludes other processes (flock(2) on the directory itself,
// so no lock file is ever left behind; the kernel releases it when its holder dies). It follows the
// path: when the directory was replaced while waiting, the new one is locked.
//
// One holder at a time within a process: callers serialise themselves.
class DirectoryLock {
 public:
  explicit DirectoryLock(std::filesystem::path directory);
  ~DirectoryLock();
  DirectoryLock(const DirectoryLock&) = delete;
  DirectoryLock& operator=(const DirectoryLock&) = delete;

  // Waits until no other process holds the lock, calling `onWait` once before it starts to wait.
  // Returns false, holding nothing, where the file system has no such locks. Throws FileError when
  // the directory can't be opened.
  [[nodiscard]] bool lock(const std::function<void()>& onWait);
  // The same without waiting.
  enum class Attempt { locked, busy, unsupported };
  [[nodiscard]] Attempt attempt();
  [[nodiscard]] bool tryLock() { return attempt() == Attempt::locked; }
  void unlock() noexcept;

 private:
  void open();
  void close() noexcept;
  [[nodiscard]] bool namesOpenDirectory() const;

  std::filesystem::path directory_;
  int descriptor_ = -1;
  pid_t owner_ = 0;  // a forked child shares its parent's lock until it opens its own
};

}  // namespace nomely
