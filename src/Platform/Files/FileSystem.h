#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Time/Moment.h"

namespace nomely {

enum class FileType { regular, directory, symbolicLink, other };

// Where a path names a symbolic link: look at what it points to, or at the link itself.
enum class LinkPolicy { follow, noFollow };

enum class Replacement { allow, forbid };

struct FileAttributes {
  FileType type = FileType::other;
  std::uint64_t size = 0;  // bytes
  Moment modified;
  std::uint64_t device = 0;
  std::uint64_t fileNumber = 0;  // unique within its device
  unsigned permissions = 0;      // the low twelve mode bits
  // When anything of it was last changed on this machine: contents, name, permissions. Nobody can
  // set it, so it tells when a file came, whatever its other times say.
  Moment changed;
};

struct DirectoryEntry {
  std::string name;
  FileType type = FileType::other;
};

// An open file. Closed, errors ignored, when it is destroyed.
class File {
 public:
  virtual ~File() = default;
  // Bytes read into `buffer`; 0 at the end of the file.
  [[nodiscard]] virtual std::size_t read(std::span<char> buffer) = 0;
  // The same from `offset` on, wherever reading stands, which stays there.
  [[nodiscard]] virtual std::size_t readAt(std::uint64_t offset, std::span<char> buffer) = 0;
  // Writes the first bytes of `bytes`, at least one, and returns how many they were.
  [[nodiscard]] virtual std::size_t write(std::string_view bytes) = 0;
  // Returns when the contents have reached the disk.
  virtual void sync() = 0;
  [[nodiscard]] virtual FileAttributes attributes() = 0;
  // Makes this empty file hold what `source` holds, sharing blocks where the file system can.
  virtual void copyContents(File& source) = 0;
  // The same by sharing blocks alone. False, with nothing done, where the file system can't.
  [[nodiscard]] virtual bool shareContents(File& source) = 0;
  // Takes over `source`'s permissions, modification time and, where allowed, extended attributes.
  virtual void copyMetadata(File& source) = 0;
  virtual void setPermissions(unsigned permissions) = 0;
  virtual void setModified(Moment modified) = 0;
};

class OpenFolder;

// The operating system's file calls, one method a call, so that a decorator can make any of them
// fail. Everything throws FileError. Safe to use from any thread at once.
class FileSystem {
 public:
  // append: to write at the end of an existing file, wherever that is by then
  enum class OpenMode { read, createNew, append };

  virtual ~FileSystem() = default;
  // createNew fails with alreadyExists; the others give null when there is no such file.
  [[nodiscard]] virtual std::unique_ptr<File> open(const std::filesystem::path& path, OpenMode mode,
                                                   LinkPolicy links) = 0;
  // Absent when nothing is there.
  [[nodiscard]] virtual std::optional<FileAttributes> attributes(const std::filesystem::path& path,
                                                                 LinkPolicy links) = 0;
  // Every entry but "." and "..", in no particular order.
  [[nodiscard]] virtual std::vector<DirectoryEntry> list(
      const std::filesystem::path& directory) = 0;
  // For reading many files of a directory. What it refuses it may refuse at the first use only.
  [[nodiscard]] virtual std::unique_ptr<OpenFolder> openFolder(
      const std::filesystem::path& directory);
  // `permissions` are those before the process's file mode mask. False when a directory is there.
  virtual bool makeDirectory(const std::filesystem::path& path, unsigned permissions) = 0;
  // Atomic; with Replacement::forbid it fails with alreadyExists and changes nothing.
  virtual void rename(const std::filesystem::path& from, const std::filesystem::path& to,
                      Replacement replacement) = 0;
  // Lets what lies under either path lie under the other, in one step. False, with nothing done,
  // where the file system can't.
  [[nodiscard]] virtual bool exchange(const std::filesystem::path& left,
                                      const std::filesystem::path& right) = 0;
  // Gives the file a second name; `to` must be free. False, with nothing done, where it can't have
  // one: another file system, or one without such links, or too many of them.
  [[nodiscard]] virtual bool link(const std::filesystem::path& from,
                                  const std::filesystem::path& to) = 0;
  // Removes a file, a link, or an empty directory. False when nothing was there.
  virtual bool remove(const std::filesystem::path& path) = 0;
  // Returns when the directory's entries have reached the disk.
  virtual void syncDirectory(const std::filesystem::path& path) = 0;
  // Returns when everything of the file system that holds `directory` has reached the disk.
  virtual void syncFileSystem(const std::filesystem::path& directory) = 0;
  // Bytes that this user may still write there.
  [[nodiscard]] virtual std::uint64_t freeSpace(const std::filesystem::path& directory) = 0;
  // Whether another file system begins at `directory`, so that it can't be renamed.
  [[nodiscard]] virtual bool isMountPoint(const std::filesystem::path& directory) = 0;
};

// The real one (POSIX). Stateless.
[[nodiscard]] FileSystem& posixFileSystem();

}  // namespace nomely
