#pragma once

#include <memory>

#include "Platform/Files/FileSystem.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {

void writeTree(const std::filesystem::path& folder, const Tree& tree);

// Regular files and folders below one folder, in memory; elsewhere nothing is. A folder that is
// made in that one is made on the disk, too, empty: locks are taken there. Knows what a power cut
// would leave: of a file what it held when it was last synchronised, of a folder the entries that
// it had then. For one thread.
class MemoryFileSystem final : public FileSystem {
 public:
  struct Node;

  // `tree` is there for good.
  MemoryFileSystem(std::filesystem::path folder, const Tree& tree);

  enum class Left {
    all,      // by a process that ends
    durable,  // by a power cut, as little as may be
    names,    // by one after the folders, but no contents, happened to be written
  };
  [[nodiscard]] Tree tree(Left left) const;

  std::unique_ptr<File> open(const std::filesystem::path& path, OpenMode mode,
                             LinkPolicy links) override;
  std::optional<FileAttributes> attributes(const std::filesystem::path& path,
                                           LinkPolicy links) override;
  std::vector<DirectoryEntry> list(const std::filesystem::path& directory) override;
  bool makeDirectory(const std::filesystem::path& path, unsigned permissions) override;
  void rename(const std::filesystem::path& from, const std::filesystem::path& to,
              Replacement replacement) override;
  bool remove(const std::filesystem::path& path) override;
  void syncDirectory(const std::filesystem::path& path) override;
  bool exchange(const std::filesystem::path& left, const std::filesystem::path& right) override;
  bool link(const std::filesystem::path& from, const std::filesystem::path& to) override;
  void syncFileSystem(const std::filesystem::path& directory) override;
  std::uint64_t freeSpace(const std::filesystem::path&) override { return std::uint64_t{1} << 40; }
  bool isMountPoint(const std::filesystem::path&) override { return false; }

 private:
  // Null when there is none.
  [[nodiscard]] std::shared_ptr<Node> find(const std::filesystem::path& path) const;
  // Throws when it is no folder.
  [[nodiscard]] Node& folder(const std::filesystem::path& path) const;

  std::filesystem::path folder_;
  std::shared_ptr<Node> root_;
};

}  // namespace nomely::test
