#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Files/OpenFolder.h"

namespace nomely {

// Durable file operations over a FileSystem. A file appears under its name whole or not at all:
// contents are written to a hidden temporary beside the target, made durable, renamed into place,
// and the folder made durable too, so that what returned has survived a power cut.
//
// A call that throws has left the old contents, or, when the last step (making the folder durable)
// failed, the new ones; what it made anew it takes away again. Repeating it is safe. A temporary
// that could not be removed stays behind under a name that no later call uses; sweepTemporaries
// takes it away.
//
// Everything throws FileError. Stateless; safe on any thread.
class FileManager {
 public:
  explicit FileManager(FileSystem& fileSystem) : fileSystem_(fileSystem) {}

  // For bulk work that keeps such promises by itself.
  [[nodiscard]] FileSystem& fileSystem() const { return fileSystem_; }

  [[nodiscard]] bool exists(const std::filesystem::path& path) const;
  [[nodiscard]] bool isDirectory(const std::filesystem::path& path) const;
  [[nodiscard]] std::optional<FileAttributes> attributes(
      const std::filesystem::path& path, LinkPolicy links = LinkPolicy::follow) const;

  // Entries sorted by name, those whose name begins with a dot left out.
  [[nodiscard]] std::vector<DirectoryEntry> listVisible(
      const std::filesystem::path& directory) const;
  [[nodiscard]] std::vector<DirectoryEntry> listAll(const std::filesystem::path& directory) const;

  // The file's bytes; absent when there is no such file. One of more than `most` bytes is refused
  // (EFBIG) before anything of it is held.
  [[nodiscard]] std::optional<std::string> read(
      const std::filesystem::path& path,
      std::uint64_t most = std::numeric_limits<std::uint64_t>::max()) const;
  // See FileSystem::openFolder.
  [[nodiscard]] std::unique_ptr<OpenFolder> openFolder(
      const std::filesystem::path& directory) const {
    return fileSystem_.openFolder(directory);
  }
  [[nodiscard]] bool contentsEqual(const std::filesystem::path& left,
                                   const std::filesystem::path& right) const;

  // Puts `bytes` under `path`, replacing what is there; a replaced file's permissions are kept.
  enum class Durability {
    now,
    later,  // doesn't wait for the disk: a power cut may take the new contents and the old ones
  };
  void writeAtomically(const std::filesystem::path& path, std::string_view bytes,
                       Durability durability = Durability::now) const;
  // Puts `bytes` in place of the file that had these attributes (LinkPolicy::noFollow), unless
  // another program has put another one there since, or changed it. Returns whether it did.
  [[nodiscard]] bool replaceAtomically(const std::filesystem::path& path, std::string_view bytes,
                                       const FileAttributes& former) const;
  // Puts `bytes` under `path` unless the name is taken. Returns whether it did. With `permissions`,
  // those of a file whose contents these are, the new one has them before its name can be seen.
  [[nodiscard]] bool createAtomically(const std::filesystem::path& path, std::string_view bytes,
                                      std::optional<unsigned> permissions = {}) const;

  // The same for contents too large to be held: `produce` hands them on piece by piece. What it
  // throws leaves everything as it was.
  using Sink = std::function<void(std::string_view piece)>;
  using Producer = std::function<void(const Sink& sink)>;
  void writeAtomically(const std::filesystem::path& path, const Producer& produce) const;
  [[nodiscard]] bool createAtomically(const std::filesystem::path& path,
                                      const Producer& produce) const;

  // Adds `bytes` at the end of a file, without waiting for the disk; a failure may leave a part of
  // them. False when there is no such file.
  [[nodiscard]] bool append(const std::filesystem::path& path, std::string_view bytes) const;

  // Creates the directory, with those permissions less the process's file mode mask, and its
  // missing parents. Nothing happens when it is there.
  void createDirectories(const std::filesystem::path& path, unsigned permissions = 0777) const;

  // Gives an existing file or folder those permissions. Returns whether it had others.
  bool setPermissions(const std::filesystem::path& path, unsigned permissions) const;

  // Copies one regular file with its metadata; `destination` must be free. With
  // LinkPolicy::noFollow a source that is a symbolic link is refused.
  void copyFile(const std::filesystem::path& source, const std::filesystem::path& destination,
                LinkPolicy links = LinkPolicy::follow) const;
  // Moves one file; `destination` must be free. Works across file systems.
  void moveFile(const std::filesystem::path& source,
                const std::filesystem::path& destination) const;

  // Removes a file. False when there was none.
  bool removeFile(const std::filesystem::path& path) const;

  // Removes a file, or a folder with everything in it, links not followed. Nothing happens when
  // there is none. What a failure leaves can be removed by repeating the call.
  void removeTree(const std::filesystem::path& path) const;

  // Whether `name` (a last path component) is that of a temporary of this class.
  [[nodiscard]] static bool isTemporaryName(std::string_view name);
  // Removes the temporaries in `directory` and returns how many went. Only for callers that know
  // that nobody is writing there now. What can't be removed is left.
  std::size_t sweepTemporaries(const std::filesystem::path& directory) const;

 private:
  class Temporary;

  // False, with nothing done, when `former` isn't null and not what is in place.
  bool replace(const std::filesystem::path& target, Temporary& written, Durability durability,
               const FileAttributes* former = nullptr) const;
  bool putNew(const std::filesystem::path& target, Temporary& written) const;
  void removeContents(const std::filesystem::path& path) const;
  // Makes the entry of a new file or folder durable, or takes it away: left standing, the next
  // attempt would take for durable what is not, or find its name taken by its own leavings.
  void settleNew(const std::filesystem::path& path) const;
  void syncParent(const std::filesystem::path& path) const;

  FileSystem& fileSystem_;
};

}  // namespace nomely
