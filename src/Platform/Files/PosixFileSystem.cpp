#include <array>
#include <cerrno>
#include <cstdio>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/time.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "Platform/Files/FileError.h"
#include "Platform/Files/OpenFolder.h"
#include "Platform/System/Descriptor.h"

namespace nomely {
namespace {

using std::filesystem::path;

template <typename Call>
auto retryInterrupted(Call call) {
  for (;;) {
    const auto result = call();
    if (result >= 0 || errno != EINTR) return result;
  }
}

Moment momentOf(const timespec& time) {
  return Moment(std::chrono::seconds(time.tv_sec) + std::chrono::microseconds(time.tv_nsec / 1000));
}

FileAttributes fromStat(const struct stat& info) {
  FileAttributes attributes;
  if (S_ISREG(info.st_mode)) attributes.type = FileType::regular;
  if (S_ISDIR(info.st_mode)) attributes.type = FileType::directory;
  if (S_ISLNK(info.st_mode)) attributes.type = FileType::symbolicLink;
  attributes.size = static_cast<std::uint64_t>(info.st_size);
  attributes.modified = momentOf(info.st_mtim);
  attributes.changed = momentOf(info.st_ctim);
  attributes.device = info.st_dev;
  attributes.fileNumber = info.st_ino;
  attributes.permissions = info.st_mode & 07777U;
  return attributes;
}

class PosixFile final : public File {
 public:
  PosixFile(int descriptor, path name) : descriptor_(descriptor), path_(std::move(name)) {}

  std::size_t read(std::span<char> buffer) override {
    const ssize_t count =
        retryInterrupted([&] { return ::read(descriptor_.get(), buffer.data(), buffer.size()); });
    if (count < 0) throw FileError("读取", path_, errno);
    return static_cast<std::size_t>(count);
  }

  std::size_t readAt(std::uint64_t offset, std::span<char> buffer) override {
    const ssize_t count = retryInterrupted([&] {
      return ::pread(descriptor_.get(), buffer.data(), buffer.size(), static_cast<off_t>(offset));
    });
    if (count < 0) throw FileError("读取", path_, errno);
    return static_cast<std::size_t>(count);
  }

  std::size_t write(std::string_view bytes) override {
    const ssize_t count =
        retryInterrupted([&] { return ::write(descriptor_.get(), bytes.data(), bytes.size()); });
    // A regular file that takes nothing and reports nothing has no room left.
    if (count <= 0) throw FileError("写入", path_, count < 0 ? errno : ENOSPC);
    return static_cast<std::size_t>(count);
  }

  void sync() override {
    if (::fsync(descriptor_.get()) != 0) throw FileError("写入", path_, errno);
  }

  FileAttributes attributes() override {
    struct stat info {};
    if (::fstat(descriptor_.get(), &info) != 0) throw FileError("查看", path_, errno);
    return fromStat(info);
  }

  bool shareContents(File& source) override {
    return ::ioctl(descriptor_.get(), FICLONE,
                   dynamic_cast<PosixFile&>(source).descriptor_.get()) == 0;
  }

  void copyContents(File& source) override {
    if (shareContents(source)) return;
    const int from = dynamic_cast<PosixFile&>(source).descriptor_.get();
    constexpr std::size_t step = std::size_t{1} << 27;
    for (bool first = true;; first = false) {
      const ssize_t count = retryInterrupted(
          [&] { return ::copy_file_range(from, nullptr, descriptor_.get(), nullptr, step, 0); });
      if (count > 0) continue;
      // Pseudo file systems report an empty range for files that do have contents.
      if (count == 0 && !first) return;
      if (count == 0 || errno == EXDEV || errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP)
        return copyThroughBuffer(source);
      throw FileError("复制", path_, errno);
    }
  }

  void copyMetadata(File& source) override {
    const int from = dynamic_cast<PosixFile&>(source).descriptor_.get();
    copyExtendedAttributes(from);
    struct stat info {};
    if (::fstat(from, &info) != 0) throw FileError("查看", path_, errno);
    if (::fchmod(descriptor_.get(), info.st_mode & 0777U) != 0)
      throw FileError("复制", path_, errno);
    const std::array times{info.st_atim, info.st_mtim};
    if (::futimens(descriptor_.get(), times.data()) != 0) throw FileError("复制", path_, errno);
  }

  void setPermissions(unsigned permissions) override {
    if (::fchmod(descriptor_.get(), permissions) != 0) throw FileError("写入", path_, errno);
  }

  void setModified(Moment modified) override {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(modified);
    const auto rest = std::chrono::duration_cast<std::chrono::nanoseconds>(modified - seconds);
    const std::array times{timespec{0, UTIME_OMIT},
                           timespec{seconds.time_since_epoch().count(), rest.count()}};
    if (::futimens(descriptor_.get(), times.data()) != 0) throw FileError("写入", path_, errno);
  }

 private:
  void copyThroughBuffer(File& source) {
    std::string buffer(std::size_t{1} << 20, '\0');
    while (const std::size_t count = source.read(buffer)) {
      std::string_view rest(buffer.data(), count);
      while (!rest.empty()) rest.remove_prefix(write(rest));
    }
  }

  // Best effort: labels and resource data that the target's file system refuses are no reason to
  // refuse the file.
  void copyExtendedAttributes(int from) {
    const ssize_t size = ::flistxattr(from, nullptr, 0);
    if (size <= 0) return;
    std::string names(static_cast<std::size_t>(size), '\0');
    const ssize_t listed = ::flistxattr(from, names.data(), names.size());
    if (listed <= 0) return;
    names.resize(static_cast<std::size_t>(listed));
    for (std::size_t at = 0; at < names.size(); at = names.find('\0', at) + 1) {
      const char* name = names.c_str() + at;
      const ssize_t length = ::fgetxattr(from, name, nullptr, 0);
      if (length < 0) continue;
      std::string value(static_cast<std::size_t>(length), '\0');
      const ssize_t got = ::fgetxattr(from, name, value.data(), value.size());
      if (got >= 0)
        (void)::fsetxattr(descriptor_.get(), name, value.data(), static_cast<std::size_t>(got), 0);
    }
  }

  Descriptor descriptor_;
  path path_;
};

FileType typeOf(const dirent64& entry, int directory) {
  switch (entry.d_type) {
    case DT_REG:
      return FileType::regular;
    case DT_DIR:
      return FileType::directory;
    case DT_LNK:
      return FileType::symbolicLink;
    case DT_UNKNOWN: {  // some file systems don't say
      struct stat info {};
      if (::fstatat(directory, entry.d_name, &info, AT_SYMLINK_NOFOLLOW) == 0)
        return fromStat(info).type;
      return FileType::other;
    }
    default:
      return FileType::other;
  }
}

int openDirectory(const path& directory) {
  const int descriptor = retryInterrupted(
      [&] { return ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
  if (descriptor < 0) throw FileError("列出", directory, errno);
  return descriptor;
}

class PosixFolder final : public OpenFolder {
 public:
  explicit PosixFolder(const path& directory)
      : descriptor_(openDirectory(directory)), path_(directory) {}

  void list(std::vector<DirectoryEntry>& entries) override {
    entries.clear();
    if (std::exchange(isListed_, true) && ::lseek(descriptor_.get(), 0, SEEK_SET) < 0)
      throw FileError("列出", path_, errno);
    alignas(dirent64) std::array<char, std::size_t{1} << 15> buffer;
    for (;;) {
      const ssize_t size = ::getdents64(descriptor_.get(), buffer.data(), buffer.size());
      if (size < 0) throw FileError("列出", path_, errno);
      if (size == 0) return;
      for (std::size_t at = 0; at < static_cast<std::size_t>(size);) {
        const auto& entry = *reinterpret_cast<const dirent64*>(buffer.data() + at);
        at += entry.d_reclen;
        const std::string_view name(entry.d_name);
        if (name == "." || name == "..") continue;
        entries.push_back({std::string(name), typeOf(entry, descriptor_.get())});
      }
    }
  }

  std::optional<FileContent> read(const std::string& name, ReadBuffer& buffer,
                                  std::uint64_t most) override {
    const Descriptor file(retryInterrupted([&] {
      return ::openat(descriptor_.get(), name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    }));
    if (file.get() < 0 && errno == ENOENT) return std::nullopt;
    if (file.get() < 0) throw FileError("打开", path_ / name, errno);
    struct stat info {};
    if (::fstat(file.get(), &info) != 0) throw FileError("查看", path_ / name, errno);
    const auto read = [&](std::span<char> room) {
      const ssize_t count =
          retryInterrupted([&] { return ::read(file.get(), room.data(), room.size()); });
      if (count < 0) throw FileError("读取", path_ / name, errno);
      return static_cast<std::size_t>(count);
    };
    return readWhole(fromStat(info), buffer, most, read,
                     [&] { throw FileError("读取", path_ / name, EFBIG); });
  }

 private:
  Descriptor descriptor_;
  path path_;
  bool isListed_ = false;
};

int accessOf(FileSystem::OpenMode mode) {
  switch (mode) {
    case FileSystem::OpenMode::read:
      return O_RDONLY;
    case FileSystem::OpenMode::createNew:
      return O_WRONLY | O_CREAT | O_EXCL;
    case FileSystem::OpenMode::append:
      return O_WRONLY | O_APPEND;
  }
  return O_RDONLY;
}

class PosixFileSystem final : public FileSystem {
 public:
  std::unique_ptr<File> open(const path& name, OpenMode mode, LinkPolicy links) override {
    // O_NONBLOCK: a FIFO that somebody left in a day folder must not hang its reader.
    const int flags =
        accessOf(mode) | O_CLOEXEC | O_NONBLOCK | (links == LinkPolicy::noFollow ? O_NOFOLLOW : 0);
    const int descriptor = retryInterrupted([&] { return ::open(name.c_str(), flags, 0666); });
    if (descriptor >= 0) return std::make_unique<PosixFile>(descriptor, name);
    if (mode != OpenMode::createNew && errno == ENOENT) return nullptr;
    throw FileError(mode != OpenMode::createNew ? "打开" : "新建", name, errno);
  }

  std::optional<FileAttributes> attributes(const path& name, LinkPolicy links) override {
    struct stat info {};
    const int flags = links == LinkPolicy::noFollow ? AT_SYMLINK_NOFOLLOW : 0;
    if (::fstatat(AT_FDCWD, name.c_str(), &info, flags) == 0) return fromStat(info);
    if (errno == ENOENT || errno == ENOTDIR) return std::nullopt;
    throw FileError("查看", name, errno);
  }

  std::vector<DirectoryEntry> list(const path& directory) override {
    std::vector<DirectoryEntry> entries;
    PosixFolder(directory).list(entries);
    return entries;
  }

  std::unique_ptr<OpenFolder> openFolder(const path& directory) override {
    return std::make_unique<PosixFolder>(directory);
  }

  bool makeDirectory(const path& name, unsigned permissions) override {
    if (::mkdir(name.c_str(), permissions) == 0) return true;
    const int reason = errno;
    struct stat info {};
    if (reason == EEXIST && ::stat(name.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) return false;
    throw FileError("新建文件夹", name, reason == EEXIST ? ENOTDIR : reason);
  }

  void rename(const path& from, const path& to, Replacement replacement) override {
    if (replacement == Replacement::allow) {
      if (::rename(from.c_str(), to.c_str()) != 0) throw FileError("写入", to, errno);
      return;
    }
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return;
    if (errno != EINVAL && errno != ENOSYS) throw FileError("写入", to, errno);
    // File systems without that flag still have link(2), which never replaces either.
    if (::link(from.c_str(), to.c_str()) != 0) throw FileError("写入", to, errno);
    if (::unlink(from.c_str()) != 0) throw FileError("删除", from, errno);
  }

  bool exchange(const path& left, const path& right) override {
    if (::renameat2(AT_FDCWD, left.c_str(), AT_FDCWD, right.c_str(), RENAME_EXCHANGE) == 0)
      return true;
    if (errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP) return false;
    throw FileError("写入", right, errno);
  }

  bool link(const path& from, const path& to) override {
    if (::link(from.c_str(), to.c_str()) == 0) return true;
    switch (errno) {
      case EXDEV:
      case EPERM:
      case EMLINK:
      case ENOSYS:
      case EOPNOTSUPP:
        return false;
      default:
        throw FileError("写入", to, errno);
    }
  }

  bool remove(const path& name) override {
    if (::remove(name.c_str()) == 0) return true;
    if (errno == ENOENT || errno == ENOTDIR) return false;
    throw FileError("删除", name, errno);
  }

  void syncDirectory(const path& name) override {
    const Descriptor descriptor(
        retryInterrupted([&] { return ::open(name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (descriptor.get() < 0) throw FileError("写入", name, errno);
    // EINVAL: a file system whose directories can't be synchronised has nothing to wait for.
    if (::fsync(descriptor.get()) != 0 && errno != EINVAL) throw FileError("写入", name, errno);
  }

  void syncFileSystem(const path& directory) override {
    if (::syncfs(Descriptor(openDirectory(directory)).get()) != 0)
      throw FileError("写入", directory, errno);
  }

  std::uint64_t freeSpace(const path& directory) override {
    struct statvfs space {};
    if (retryInterrupted([&] { return ::statvfs(directory.c_str(), &space); }) != 0)
      throw FileError("查看", directory, errno);
    return static_cast<std::uint64_t>(space.f_bavail) * space.f_frsize;
  }

  bool isMountPoint(const path& directory) override {
    struct statx info {};
    if (::statx(AT_FDCWD, directory.c_str(), 0, STATX_BASIC_STATS, &info) != 0)
      throw FileError("查看", directory, errno);
    return (info.stx_attributes_mask & info.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
  }
};

}  // namespace

FileSystem& posixFileSystem() {
  static PosixFileSystem fileSystem;
  return fileSystem;
}

}  // namespace nomely
