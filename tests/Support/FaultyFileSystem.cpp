#include "Support/FaultyFileSystem.h"

#include <algorithm>
#include <array>
#include <utility>

#include "Platform/Files/FileError.h"

namespace nomely::test {
namespace {

std::string_view firstHalf(std::string_view bytes) {
  return bytes.substr(0, (bytes.size() + 1) / 2);
}

}  // namespace

bool FaultyFileSystem::strikes(std::string_view name, const std::filesystem::path& path) {
  const std::uint64_t number = ++calls_;
  if (observer_) observer_({name, path});
  if (number <= fault_.atCall || fault_.every == 0) return number == fault_.atCall;
  return (number - fault_.atCall) % fault_.every == 0;
}

void FaultyFileSystem::fail(const std::filesystem::path& path) const {
  throw FileError("测试", path, fault_.errorNumber);
}

template <typename Whole, typename Half>
auto FaultyFileSystem::guarded(std::string_view name, const std::filesystem::path& path,
                               Whole whole, Half half) {
  if (!strikes(name, path)) return whole();
  if (fault_.mode == Mode::partial) return half();
  if (fault_.mode == Mode::failLate) whole();
  fail(path);
}

template <typename Whole>
auto FaultyFileSystem::guarded(std::string_view name, const std::filesystem::path& path,
                               Whole whole) {
  return guarded(name, path, whole, whole);
}

class FaultyFile final : public File {
 public:
  FaultyFile(FaultyFileSystem& owner, std::unique_ptr<File> inner, std::filesystem::path path)
      : owner_(owner), inner_(std::move(inner)), path_(std::move(path)) {}

  std::size_t read(std::span<char> buffer) override {
    return owner_.guarded(
        "read", path_, [&] { return inner_->read(buffer); },
        [&] { return inner_->read(buffer.first((buffer.size() + 1) / 2)); });
  }

  std::size_t readAt(std::uint64_t offset, std::span<char> buffer) override {
    return owner_.guarded(
        "readAt", path_, [&] { return inner_->readAt(offset, buffer); },
        [&] { return inner_->readAt(offset, buffer.first((buffer.size() + 1) / 2)); });
  }

  std::size_t write(std::string_view bytes) override {
    return owner_.guarded(
        "write", path_, [&] { return inner_->write(bytes); },
        [&] { return inner_->write(firstHalf(bytes)); });
  }

  void sync() override {
    owner_.guarded("sync", path_, [&] { inner_->sync(); });
  }
  FileAttributes attributes() override {
    return owner_.guarded("fstat", path_, [&] { return inner_->attributes(); });
  }
  void copyContents(File& source) override {
    File& from = *dynamic_cast<FaultyFile&>(source).inner_;
    owner_.guarded(
        "copyContents", path_, [&] { inner_->copyContents(from); },
        [&] {
          std::string bytes(from.attributes().size, '\0');
          bytes.resize(from.read(bytes));
          (void)inner_->write(firstHalf(bytes));
          owner_.fail(path_);
        });
  }
  bool shareContents(File& source) override {
    File& from = *dynamic_cast<FaultyFile&>(source).inner_;
    return owner_.guarded("shareContents", path_, [&] { return inner_->shareContents(from); });
  }
  void copyMetadata(File& source) override {
    File& from = *dynamic_cast<FaultyFile&>(source).inner_;
    owner_.guarded("copyMetadata", path_, [&] { inner_->copyMetadata(from); });
  }
  void setPermissions(unsigned permissions) override {
    owner_.guarded("setPermissions", path_, [&] { inner_->setPermissions(permissions); });
  }
  void setModified(Moment modified) override {
    owner_.guarded("setModified", path_, [&] { inner_->setModified(modified); });
  }

 private:
  FaultyFileSystem& owner_;
  std::unique_ptr<File> inner_;
  std::filesystem::path path_;
};

bool FaultyFileSystem::canBePartial(const Call& call) {
  static constexpr std::array<std::string_view, 4> transfers{"read", "readAt", "write",
                                                             "copyContents"};
  return std::ranges::find(transfers, call.name) != transfers.end();
}

std::unique_ptr<File> FaultyFileSystem::open(const std::filesystem::path& path, OpenMode mode,
                                             LinkPolicy links) {
  static constexpr std::array names{"open", "create", "append"};
  return guarded(names[static_cast<std::size_t>(mode)], path, [&]() -> std::unique_ptr<File> {
    auto inner = inner_.open(path, mode, links);
    if (!inner) return nullptr;
    return std::make_unique<FaultyFile>(*this, std::move(inner), path);
  });
}

std::optional<FileAttributes> FaultyFileSystem::attributes(const std::filesystem::path& path,
                                                           LinkPolicy links) {
  return guarded("stat", path, [&] { return inner_.attributes(path, links); });
}

std::vector<DirectoryEntry> FaultyFileSystem::list(const std::filesystem::path& directory) {
  return guarded("list", directory, [&] { return inner_.list(directory); });
}

bool FaultyFileSystem::makeDirectory(const std::filesystem::path& path, unsigned permissions) {
  return guarded("makeDirectory", path, [&] { return inner_.makeDirectory(path, permissions); });
}

void FaultyFileSystem::rename(const std::filesystem::path& from, const std::filesystem::path& to,
                              Replacement replacement) {
  guarded("rename", to, [&] { inner_.rename(from, to, replacement); });
}

bool FaultyFileSystem::remove(const std::filesystem::path& path) {
  return guarded("remove", path, [&] { return inner_.remove(path); });
}

void FaultyFileSystem::syncDirectory(const std::filesystem::path& path) {
  guarded("syncDirectory", path, [&] { inner_.syncDirectory(path); });
}

bool FaultyFileSystem::exchange(const std::filesystem::path& left,
                                const std::filesystem::path& right) {
  return guarded("exchange", right, [&] { return inner_.exchange(left, right); });
}

bool FaultyFileSystem::link(const std::filesystem::path& from, const std::filesystem::path& to) {
  return guarded("link", to, [&] { return inner_.link(from, to); });
}

void FaultyFileSystem::syncFileSystem(const std::filesystem::path& directory) {
  guarded("syncFileSystem", directory, [&] { inner_.syncFileSystem(directory); });
}

std::uint64_t FaultyFileSystem::freeSpace(const std::filesystem::path& directory) {
  return guarded("freeSpace", directory, [&] { return inner_.freeSpace(directory); });
}

bool FaultyFileSystem::isMountPoint(const std::filesystem::path& directory) {
  return guarded("isMountPoint", directory, [&] { return inner_.isMountPoint(directory); });
}

}  // namespace nomely::test
