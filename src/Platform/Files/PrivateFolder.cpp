#include "Platform/Files/PrivateFolder.h"

#include <cerrno>
#include <string>

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/Files/FileError.h"
#include "Platform/System/Uuid.h"

namespace nomely {
namespace {

// The parent is everybody's: a link, or a folder of another user's, is none of ours.
bool isOwn(const std::filesystem::path& folder) {
  struct stat status {};
  return ::lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
         status.st_uid == ::geteuid();
}

void sweep(const std::filesystem::path& parent, const std::string& prefix) {
  std::error_code ignored;
  for (std::filesystem::directory_iterator entry(parent, ignored), end; entry != end;
       entry.increment(ignored)) {
    if (!entry->path().filename().string().starts_with(prefix) || !isOwn(entry->path())) continue;
    try {
      DirectoryLock lock(entry->path());
      if (lock.tryLock()) std::filesystem::remove_all(entry->path(), ignored);
    } catch (const FileError&) {
      // Another has swept it.
    }
  }
}

}  // namespace

PrivateFolder::PrivateFolder(const std::filesystem::path& parent, std::string_view purpose) {
  const std::string prefix = fmt::format("nomely_{}_", purpose);
  sweep(parent, prefix);
  constexpr int attempts = 3;  // somebody may sweep it before it is locked
  for (int i = 0; i < attempts; ++i) {
    path_ = parent / (prefix + Uuid::random().string());
    if (::mkdir(path_.c_str(), 0700) != 0) throw FileError("新建文件夹", path_, errno);
    try {
      if (lock_.emplace(path_).tryLock()) return;
    } catch (const FileError& error) {
      if (error.kind() != FileError::Kind::notFound) throw;
    }
  }
}

PrivateFolder::~PrivateFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace nomely
