#include "Platform/Files/DirectoryLock.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/Files/FileError.h"

namespace nomely {

DirectoryLock::DirectoryLock(std::filesystem::path directory) : directory_(std::move(directory)) {}

DirectoryLock::~DirectoryLock() {
  close();
}

bool DirectoryLock::lock(const std::function<void()>& onWait) {
  for (bool waited = false;;) {
    if (descriptor_ < 0 || owner_ != ::getpid()) open();
    if (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
      if (errno != EWOULDBLOCK && errno != EINTR) return false;
      if (!std::exchange(waited, true)) onWait();
      while (::flock(descriptor_, LOCK_EX) != 0)
        if (errno != EINTR) return false;
    }
    if (namesOpenDirectory()) return true;
    close();
  }
}

DirectoryLock::Attempt DirectoryLock::attempt() {
  for (;; close()) {
    if (descriptor_ < 0 || owner_ != ::getpid()) open();
    while (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
      if (errno != EWOULDBLOCK && errno != EINTR) return Attempt::unsupported;
      // Whoever holds one that is no longer there keeps nobody from its successor.
      if (errno == EWOULDBLOCK && namesOpenDirectory()) return Attempt::busy;
      if (errno == EWOULDBLOCK) open();
    }
    if (namesOpenDirectory()) return Attempt::locked;
  }
}

void DirectoryLock::unlock() noexcept {
  if (descriptor_ >= 0) ::flock(descriptor_, LOCK_UN);
}

void DirectoryLock::open() {
  close();
  descriptor_ = ::open(directory_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor_ < 0) throw FileError("锁定", directory_, errno);
  owner_ = ::getpid();
}

void DirectoryLock::close() noexcept {
  if (descriptor_ >= 0) ::close(std::exchange(descriptor_, -1));
}

bool DirectoryLock::namesOpenDirectory() const {
  struct stat opened {};
  struct stat named {};
  return ::fstat(descriptor_, &opened) == 0 && ::stat(directory_.c_str(), &named) == 0 &&
         opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

}  // namespace nomely
