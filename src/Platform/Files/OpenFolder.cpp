#include "Platform/Files/OpenFolder.h"

#include <algorithm>
#include <cerrno>

#include "Platform/Files/FileError.h"

namespace nomely {
namespace {

// A folder of any file system, by its other calls.
class NamedFolder final : public OpenFolder {
 public:
  NamedFolder(FileSystem& fileSystem, std::filesystem::path directory)
      : fileSystem_(fileSystem), directory_(std::move(directory)) {}

  void list(std::vector<DirectoryEntry>& entries) override {
    entries = fileSystem_.list(directory_);
  }

  std::optional<FileContent> read(const std::string& name, ReadBuffer& buffer,
                                  std::uint64_t most) override {
    const std::filesystem::path path = directory_ / name;
    const std::unique_ptr<File> file =
        fileSystem_.open(path, FileSystem::OpenMode::read, LinkPolicy::follow);
    if (!file) return std::nullopt;
    return readWhole(
        file->attributes(), buffer, most, [&](std::span<char> room) { return file->read(room); },
        [&] { throw FileError("读取", path, EFBIG); });
  }

 private:
  FileSystem& fileSystem_;
  std::filesystem::path directory_;
};

}  // namespace

std::span<char> ReadBuffer::room(std::size_t size, std::size_t keep) {
  if (size > size_) {
    constexpr std::size_t least = std::size_t{1} << 16;
    const std::size_t grown = std::max(size, least);
    auto bytes = std::make_unique_for_overwrite<char[]>(grown);
    std::copy_n(bytes_.get(), keep, bytes.get());
    bytes_ = std::move(bytes);
    size_ = grown;
  }
  return {bytes_.get(), size_};
}

std::unique_ptr<OpenFolder> FileSystem::openFolder(const std::filesystem::path& directory) {
  return std::make_unique<NamedFolder>(*this, directory);
}

}  // namespace nomely
